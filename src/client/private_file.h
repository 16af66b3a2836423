#pragma once

class QSaveFile;

namespace quorvelle {

/// Opens a save-file for writing so that its temporary file, and with it the file
/// that is put in place, is readable by the owner alone from its creation on, also
/// where the file that it replaces was open to others.
bool openOwnerOnly(QSaveFile& file);

}  // namespace quorvelle
