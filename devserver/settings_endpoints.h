#pragma once

#include "router.h"
#include "service.h"

/// What an administrator sets up once. Each function adds the endpoints of one noun, whose
/// settings are kept and shown, and acted upon as far as its comment says.

namespace quorvelle::devserver {

/// The license, the trials of a licensing service, and the billing page with its link that
/// expires. Seats are counted; nobody is turned away for want of one.
void addLicenseEndpoints(Router& router, Service& service);

/// Backups: encrypted snapshots of everything but the files of builds, in the data folder
/// whatever bucket is named, made when asked and not by the schedule.
void addBackupEndpoints(Router& router, Service& service);

/// The bucket for tide builds, which can be tested. Chunks stay in the data folder.
void addStorageEndpoints(Router& router, Service& service);

/// The provider of a single sign-on, which can be tested, and the mapping of its claims.
/// This server describes itself as one as well. The sign-in stays the button for a guest.
void addSsoEndpoints(Router& router, Service& service);

}  // namespace quorvelle::devserver
