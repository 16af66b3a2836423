#include "server/authorities.h"

#include <QDir>
#include <QFile>
#include <QSslConfiguration>

namespace quorvelle {

namespace {

QString cannotRead(const char* variable, const QString& path, const QString& reason) {
    return QStringLiteral("%1: cannot read %2: %3")
        .arg(QLatin1String(variable), QDir::toNativeSeparators(path), reason);
}

void readFile(const QString& path, Authorities& into) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        into.problem = cannotRead("SSL_CERT_FILE", path, file.errorString());
        return;
    }
    const auto found = QSslCertificate::fromDevice(&file);
    if (found.isEmpty()) {
        into.problem =
            cannotRead("SSL_CERT_FILE", path, QStringLiteral("it holds no PEM certificate"));
    }
    into.certificates += found;
}

/// Such folders hold other files, too, and several names for each.
void readFolder(const QString& path, Authorities& into) {
    const QDir folder(path);
    if (!folder.isReadable()) {
        into.problem = cannotRead("SSL_CERT_DIR", path, QStringLiteral("it is no readable folder"));
        return;
    }
    for (const QString& name : folder.entryList(QDir::Files)) {
        into.certificates += QSslCertificate::fromPath(folder.filePath(name), QSsl::Pem);
    }
}

}  // namespace

Authorities readAuthorities(const QString& file, const QString& folders) {
    Authorities read;
    if (!file.isEmpty()) {
        readFile(file, read);
    }
    for (const QString& folder : folders.split(QDir::listSeparator(), Qt::SkipEmptyParts)) {
        if (read.problem.isEmpty()) {
            readFolder(folder, read);
        }
    }
    if (!read.certificates.isEmpty()) {
        // A list that is given is all that counts; the network layer adds none to it.
        read.certificates += QSslConfiguration::systemCaCertificates();
    }
    return read;
}

const Authorities& givenAuthorities() {
    static const Authorities given = readAuthorities(qEnvironmentVariable("SSL_CERT_FILE"),
                                                     qEnvironmentVariable("SSL_CERT_DIR"));
    return given;
}

}  // namespace quorvelle
