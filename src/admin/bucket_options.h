#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace quorvelle {

/// An S3 bucket and the access to it, as the options of a command line name them. An
/// option that was not given is an empty string.
struct BucketOptions {
    QString endpoint = {};
    QString bucket = {};
    QString accessKey = {};
    QString secretKey = {};
    QString region = {};

    /// Whether any of the options was given.
    bool any() const;

    /// Whether all that a bucket needs was given; the region may be missing.
    bool complete() const;

    /// The options as a server wants them; no region is "auto".
    QJsonObject json() const;
};

/// Takes the options out of the arguments.
BucketOptions takeBucketOptions(QStringList& args);

}  // namespace quorvelle
