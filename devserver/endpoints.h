#pragma once

#include "build_store.h"
#include "channel_store.h"
#include "data_folder.h"
#include "router.h"

namespace quorvelle::devserver {

/// What the endpoints work on. All of it must outlive the router.
struct Service {
    const DataFolder& folder;
    BuildStore& builds;
    ChannelStore& channels;
};

/// Adds every endpoint this server has.
void addEndpoints(Router& router, const Service& service);

}  // namespace quorvelle::devserver
