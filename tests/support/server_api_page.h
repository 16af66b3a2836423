#pragma once

#include <QRegularExpression>
#include <QString>
#include <string>
#include <vector>

namespace quorvelle::testing {

/// A request as docs/server-api.md describes it: "- `METHOD /path/<name>?key=<value>`", the parts
/// that may be missing in "[ ]", and behind "Body:" the object that is sent.
struct DescribedRequest {
    /// The text of a page below the repository's root.
    static QString page(const QString& path);
    static const std::vector<DescribedRequest>& all();
    /// What the page does not say of a request that a server saw; empty when it says all.
    static std::string complaint(const std::string& method, const std::string& target,
                                 const std::string& body);

    QString method;
    /// With "%1" in the place of every name.
    QString path;
    QString query;
    /// What stands behind the request, up to the next one.
    QString text;
};

}  // namespace quorvelle::testing
