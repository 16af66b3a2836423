#pragma once

#include "support/server_fixture.h"

namespace quorvelle::testing {

enum class Engine { kCargo, kTide };

/// How an install directory stands before a sync to build 2.
enum class Start {
    kNothing,  ///< a first install
    kBuild1,   ///< build 1 is installed
    kTheirs,   ///< a directory that somebody else made stands in its place
    kStaged,   ///< the same; build 2 waits in staging, an older swap left ".old" behind
    kLegacy,   ///< build 1 with the state entries where earlier releases kept them
};

/// A server whose channel "stable" stands at build 2, and install directories in
/// "games/app" below sandboxes that are to follow it. Build 2 changes, adds and removes
/// files of build 1; each has nested files, an empty one and one of 2 MiB.
class SyncWorld {
public:
    explicit SyncWorld(Engine engine);

    void prepare(const Sandbox& sandbox, Start start) const;

    void breakDownload();

    FakeServer server;

private:
    const Engine engine;
};

/// What the install directory holds: "build 1", "build 2", "theirs", "nothing" or "a
/// mixture: " with the names. Where nothing stands while there is an ".old" or a
/// ".replaced", "old: ..., staging: ..." or "kept: ..., staging: ..." in the same words.
std::string standing(const Sandbox& sandbox);

std::string stagedFiles(const Sandbox& sandbox);

/// Fails the test unless an unhindered sync brings build 2 with its marker and leaves
/// nothing else behind but, after kTheirs, what was theirs; and the next one finds all up
/// to date. `mayKeepOld` allows a whole or partial ".old" with its record, which a later
/// sync removes.
void expectConvergence(Sandbox& sandbox, Engine engine, Start start, bool mayKeepOld = false);

}  // namespace quorvelle::testing
