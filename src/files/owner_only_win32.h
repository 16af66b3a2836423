#pragma once

#include <windows.h>

namespace quorvelle {

/// Gives files that are created with attributes() an access list that names the user of
/// this process alone and takes nothing over from the folder.
class OwnerOnlyAccess {
public:
    OwnerOnlyAccess();
    ~OwnerOnlyAccess();
    OwnerOnlyAccess(const OwnerOnlyAccess&) = delete;
    OwnerOnlyAccess& operator=(const OwnerOnlyAccess&) = delete;

    /// For CreateFileW; valid as long as this object. Null when the system told no user:
    /// then no file may be made.
    SECURITY_ATTRIBUTES* attributes() { return descriptor == nullptr ? nullptr : &security; }

    /// Gives an open file that exists already (WRITE_DAC) the same list. False when the
    /// system refuses.
    bool applyTo(HANDLE file) const;

private:
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    SECURITY_ATTRIBUTES security = {};
};

}  // namespace quorvelle
