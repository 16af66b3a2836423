#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace quorvelle {

/// The one-time code that a sign-in hands to the loopback listener on `port`: the decoded
/// query item "handoff" of an HTTP request, of which whatever arrived is given, its head at
/// least, or much of a long one. Empty when the request brings none, and for a request that no
/// browser makes when it follows the server's redirect: another method than GET, a Host that
/// is another dotted name or address than the listener's, or something fetched by a page
/// (Sec-Fetch-Dest). A header line whose end has not arrived is not judged.
QString handoffIn(const QByteArray& request, quint16 port);

}  // namespace quorvelle
