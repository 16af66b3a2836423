#pragma once

#include <QByteArray>
#include <QString>
#include <memory>

namespace quorvelle {

/// A text file for a secret that is shown once: readable by its owner alone from its
/// creation on; a file that exists is emptied and made so before anything is written.
/// It is written in place, since it may be a pipe or another device.
class SecretFile {
public:
    SecretFile();
    /// Leaves an empty file behind only where there was one before.
    ~SecretFile();
    SecretFile(const SecretFile&) = delete;
    SecretFile& operator=(const SecretFile&) = delete;

    /// False when the file cannot be made, emptied or kept from others.
    bool open(const QString& path);

    /// Writes the whole content, once, to the disk itself, and closes the file.
    bool write(const QByteArray& text);

private:
    struct Handle;
    std::unique_ptr<Handle> handle;
};

}  // namespace quorvelle
