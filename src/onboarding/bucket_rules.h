#pragma once

#include <QString>

/// What Cloudflare R2 takes as a bucket's name.

namespace quorvelle::onboarding {

/// Why a name is not acceptable, as a sentence for the user; empty when it is.
QString bucketNameProblem(const QString& name);

/// The name of a bucket whose owner did not choose one, made unlikely to be taken by
/// the low 24 bits of `random`.
QString defaultBucketName(quint64 random);

}  // namespace quorvelle::onboarding
