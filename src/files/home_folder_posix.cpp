#include <pwd.h>
#include <unistd.h>

#include <QByteArray>
#include <vector>

#include "files/home_folder.h"

namespace quorvelle {

namespace {

/// What the user database says of one user takes far less.
constexpr std::size_t kMaxBytes = 65536;

QByteArray homeOfThisUser() {
    passwd entry = {};
    passwd* found = nullptr;
    std::vector<char> texts(kMaxBytes);
    ::getpwuid_r(::geteuid(), &entry, texts.data(), texts.size(), &found);
    return found == nullptr ? QByteArray() : QByteArray(found->pw_dir);
}

}  // namespace

bool findHomeFolder() {
    if (!qgetenv("HOME").isEmpty()) {
        return true;
    }
    const QByteArray home = homeOfThisUser();
    return home.startsWith('/') && qputenv("HOME", home);
}

}  // namespace quorvelle
