#pragma once

#include <unistd.h>

#include <sstream>
#include <string>

#include "benchmarks/slow_volume/VolumeMount.h"

/// A folder as another machine sees it: mounted by a FUSE program that fails by a rule (`slow-volume --fail`).
class FaultyMount : public slowvolume::VolumeMount {
public:
    FaultyMount(const std::string& source, const char* rule)
        : VolumeMount(QStringLiteral(ZU_BINARY_DIR "/bin/slow-volume"), source,
                      {QStringLiteral("--delay-ms"), QStringLiteral("0"), QStringLiteral("--cache-seconds"),
                       QStringLiteral("0"), QStringLiteral("--threads"), QStringLiteral("2"),
                       QStringLiteral("--fail"), QLatin1String(rule), QStringLiteral("--statistics")}) {}

    static bool IsPossible() {
#ifdef __SANITIZE_THREAD__
        return false;  // Once a QProcess has run, the sanitizer no longer sees what its thread locks.
#endif
        return ::access("/dev/fuse", R_OK | W_OK) == 0;
    }

    /// How many calls the rule has let fail. Unmounts.
    int CountFailures() {
        Unmount();
        std::istringstream lines(ErrorText());
        int count = 0;
        for (std::string word; lines >> word;)
            if (word == "failures") lines >> count;
        return count;
    }
};
