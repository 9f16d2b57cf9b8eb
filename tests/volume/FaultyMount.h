#pragma once

#include <unistd.h>

#include <sstream>
#include <string>

#include "benchmarks/slow_volume/VolumeMount.h"

/// A folder as another machine shares it: mounted by a FUSE program that fails by a rule (`slow-volume
/// --fail`).
class FaultyMount : public slowvolume::VolumeMount {
public:
    struct Kind {
        /// For how long names, their absence and attributes are kept.
        int mCacheSeconds = 0;
        bool mHasRenameFlags = false;
        bool mHasLinks = true;
    };
    /// Fails nothing before `Arm`.
    FaultyMount(const std::string& source, const Kind& kind, const std::string& rule)
        : VolumeMount(QStringLiteral(ZU_BINARY_DIR "/bin/slow-volume"), source, MakeOptions(kind, rule)) {}

    static bool IsPossible() {
#ifdef __SANITIZE_THREAD__
        return false;  // Once a QProcess has run, the sanitizer no longer sees what its thread locks.
#endif
        return ::access("/dev/fuse", R_OK | W_OK) == 0;
    }

    /// Calls count from here on.
    void Arm() const {
        ::access(Path(kArmingName).c_str(), F_OK);
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

private:
    static constexpr char kArmingName[] = "arm the rules";

    static QStringList MakeOptions(const Kind& kind, const std::string& rule) {
        const QString always =
            QStringLiteral("--delay-ms 0 --keep-absence --threads 2 --statistics --cache-seconds %1");
        QStringList options = always.arg(kind.mCacheSeconds).split(QLatin1Char(' '));
        options << QStringLiteral("--arm") << QLatin1String(kArmingName) << QStringLiteral("--fail")
                << QString::fromStdString(rule);
        if (kind.mHasRenameFlags) options += QStringLiteral("--rename-flags");
        if (!kind.mHasLinks) options += QStringLiteral("--no-links");
        return options;
    }
};
