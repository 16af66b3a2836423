#include "admin/membership.h"

#include "server/on_server.h"

namespace quorvelle {

namespace {

using Call = Reply (*)(const Server& server, const QString& path, const QString& label,
                       const QueryItems& query);

int changeMembers(QStringList args, const MembershipChange& change, Call call) {
    return onServer(std::move(args), 2, [&](const Server& server, QStringList& rest) {
        const Reply reply = call(server, apiPath(change.path, rest.first()), change.label,
                                 {{change.key, rest.last()}});
        return finish(reply, change.text.arg(rest.first(), rest.last()) + u'\n');
    });
}

Reply post(const Server& server, const QString& path, const QString& label,
           const QueryItems& query) {
    return postEmpty(server, path, label, query);
}

}  // namespace

int addMember(QStringList args, const MembershipChange& change) {
    return changeMembers(std::move(args), change, post);
}

int removeMember(QStringList args, const MembershipChange& change) {
    return changeMembers(std::move(args), change, deleteResource);
}

}  // namespace quorvelle
