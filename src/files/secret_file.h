#pragma once

#include <QByteArray>
#include <QString>
#include <memory>

namespace quorvelle {

/// A text file for a secret that is shown once: readable by its owner alone from its
/// creation on; a file that exists is made so when it is opened. It is written in place,
/// since it may be a pipe or another device.
class SecretFile {
public:
    SecretFile();
    /// Without a write() that succeeded, leaves no file behind where there was none before.
    ~SecretFile();
    SecretFile(const SecretFile&) = delete;
    SecretFile& operator=(const SecretFile&) = delete;

    /// Opens the file, or makes it, and keeps what it holds. Does not wait for somebody to
    /// read from a pipe, nor make a file where a link leads to none. False when the file
    /// cannot be made, opened for writing or kept from others.
    bool open(const QString& path);

    /// Puts the text in the place of all that the file held, once, to the disk itself, and
    /// closes the file.
    bool write(const QByteArray& text);

private:
    struct Handle;
    std::unique_ptr<Handle> handle;
};

}  // namespace quorvelle
