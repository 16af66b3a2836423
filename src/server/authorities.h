#pragma once

#include <QList>
#include <QSslCertificate>
#include <QString>

namespace quorvelle {

/// The authorities that count where the environment adds some to those of the system: the PEM
/// file `SSL_CERT_FILE`, and all files of the folders in `SSL_CERT_DIR` (separated as in PATH).
struct Authorities {
    /// The system's and the added ones; empty where the environment names none.
    QList<QSslCertificate> certificates = {};
    /// Why no https address must be asked for, or an empty text: a file without any
    /// certificate, or what cannot be read.
    QString problem = {};
};

Authorities readAuthorities(const QString& file, const QString& folders);

/// Those of this process's environment, read at the first call. Any thread.
const Authorities& givenAuthorities();

}  // namespace quorvelle
