#include "support/faulty_run.h"

namespace quorvelle::testing {

namespace {

/// Below the sandbox, away from everything that tests look at.
constexpr char kReport[] = "fault-report";

void setUpShim(QProcessEnvironment& environment, const QString& report, Fault fault) {
    environment.insert("LD_PRELOAD", FAULT_SHIM);
    environment.insert("FAULT_REPORT", report);
    if (fault.call > 0) {
        environment.insert("FAULT_AT", QString::number(fault.call));
    }
    if (fault.error > 0) {
        environment.insert("FAULT_ERRNO", QString::number(fault.error));
    }
    // The address sanitizer then comes second, which it can live with; its search for
    // leaks would take longer than the run.
    environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") +
                                           ":verify_asan_link_order=0:detect_leaks=0");
}

}  // namespace

FaultyOutcome runFaulty(Sandbox& sandbox, const QStringList& args, Fault fault) {
    const QString report = QLatin1String(kReport);
    QFile::remove(sandbox.path(report));
    const QProcessEnvironment unhindered = sandbox.environment;
    setUpShim(sandbox.environment, sandbox.path(report), fault);
    FaultyOutcome outcome{sandbox.run(args)};
    sandbox.environment = unhindered;
    if (QFile::exists(sandbox.path(report))) {
        const QList<QByteArray> words = sandbox.read(report).split(' ');
        outcome.calls = words.value(0).toInt();
        outcome.failed = words.value(1).toStdString();
    }
    return outcome;
}

std::vector<int> faultPoints(int calls, int step) {
    std::vector<int> points;
    for (int call = 1; call <= calls; call += step * FAULT_STRIDE) {
        points.push_back(call);
    }
    return points;
}

}  // namespace quorvelle::testing
