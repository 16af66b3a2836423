#include "account/commands.h"

#include "account/browser.h"
#include "account/reconcile_command.h"
#include "account/session.h"
#include "account/sso_login.h"
#include "config/server_url.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/next_step.h"
#include "server/url.h"

namespace quorvelle {

namespace {

/// Shows what is about to happen and where; in JSON mode apart from the result.
void printOpening(const QString& server, const QString& url) {
    const Lines text = lines(QStringLiteral("Opening your browser to sign in at %1 ...\n"
                                            "If it does not open, use this link:\n  %2"),
                             {server, url});
    if (jsonMode()) {
        printDiagnostic(text);
    } else {
        print(text);
    }
}

Lines signedInText(const QString& server, const QJsonObject& result) {
    const QString note = result.value(u"note").toString();
    return sessionText(QStringLiteral("Signed in to"), server, result) +
           (note.isEmpty() ? Lines() : Lines{QStringLiteral("Note: %1").arg(note)});
}

}  // namespace

int loginCommand(QStringList args) {
    const QString root = takeOption(args, QStringLiteral("--install-root"));
    const bool noBrowser = takeFlag(args, QStringLiteral("--no-browser"));
    if (args.size() != 1) {
        return printUsage();
    }
    const QString server = withoutTrailingSlashes(args.at(0));
    if (!isWebUrl(server)) {
        // Nobody could open the link, and five minutes would pass before that showed.
        printError(QStringLiteral("'%1' is no http or https address").arg(server));
        printNote(addressHint(server));
        return kExitUsage;
    }
    if (!canStoreSession(server, root)) {
        return kExitFailed;
    }
    SsoLogin login;
    QString url;
    QString error;
    if (!login.start(server, &url, &error)) {
        return failWith(kExitFailed, error);
    }
    printOpening(server, url);
    if (!noBrowser) {
        openBrowser(url);
    }
    const SignIn signIn = awaitSignIn(login);
    if (!signIn.ok) {
        return failWith(kExitFailed,
                        signIn.error.isEmpty() ? QStringLiteral("sign-in failed") : signIn.error);
    }
    const auto entry = storeSession(server, signIn.result, root, QStringLiteral("sign-in"));
    if (!entry) {
        return kExitFailed;
    }
    printProgress(signedInText(server, signIn.result));
    const Reconciled outcome = reconcileServer(*entry);
    printResult(withChanges(signIn.result, outcome), changesText(outcome));
    return outcome.ok ? kExitSuccess : kExitFailed;
}

}  // namespace quorvelle
