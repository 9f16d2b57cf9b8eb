#include "desk/core/durable/ReplaceFile.h"

#include <cerrno>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "desk/core/durable/NewFile.h"
#include "desk/core/durable/Presence.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"

namespace desk {

namespace {

/// How often the rename is tried.
constexpr int kTries = 2;

/// The temporaries of this process that are left, by the files that they were to replace.
class KeptTemporaries {
public:
    void Add(const std::string& path, const std::string& temporary) {
        const std::lock_guard lock(mMutex);
        mKept[path].push_back(temporary);
    }
    std::vector<std::string> TakeOut(const std::string& path) {
        const std::lock_guard lock(mMutex);
        const auto kept = mKept.extract(path);
        return kept ? std::move(kept.mapped()) : std::vector<std::string>();
    }

private:
    std::mutex mMutex;
    std::map<std::string, std::vector<std::string>> mKept;
};

KeptTemporaries& GetKept() {
    static KeptTemporaries& kept = *new KeptTemporaries;
    return kept;
}

class Replacing {
public:
    Replacing(FileSystem& fileSystem, const std::string& path)
        : mDisk(fileSystem),
          mPath(path),
          mTemporary(JoinPath<std::string>(FolderOf(path), MakeSaveName(NameOf(path)))) {}

    FileReplacement Run(const std::string& bytes, unsigned modeOfNewFile) {
        try {
            const unsigned mode = FindMode(modeOfNewFile);
            mIsBegun = true;
            mDisk.CreateNewFile(mTemporary, bytes, mode);
        } catch (const host::FileException& exception) {
            return GiveUp(exception);
        }
        return Publish(bytes);
    }

private:
    using Outcome = FileReplacement::Outcome;

    unsigned FindMode(unsigned modeOfNewFile) {
        try {
            const ItemStatus old = mDisk.Status(mPath, false);
            return old.mKind == ItemKind::File ? old.mMode & 0777 : modeOfNewFile;
        } catch (const host::FileException& exception) {
            if (exception.SystemError() != ENOENT) throw;
            return modeOfNewFile;
        }
    }

    FileReplacement Publish(const std::string& bytes) {
        for (int tries = 1;; ++tries) {
            try {
                mDisk.Rename(mTemporary, mPath);
                return Finish();
            } catch (const host::FileException& exception) {
                const auto found = FindPresence(mDisk, {mPath, mTemporary});
                const bool isThere = found[0] == Presence::There;
                // Somebody else may have removed the temporary.
                if (isThere && found[1] == Presence::Gone && DoesHold(mDisk, mPath, bytes)) return Finish();
                // A refusal speaks for the last step of a replacement only: the old file may be gone already.
                if (isThere && (found[1] == Presence::There || IsRefusal(exception.SystemError())))
                    return GiveUp(exception);
                // The volume has removed the old file, and not renamed the new one: the name is free now.
                const bool isNameFree = found[0] == Presence::Gone && found[1] == Presence::There;
                if (!isNameFree || tries == kTries) return Keep(exception, found[1] != Presence::Gone);
            }
        }
    }

    FileReplacement Finish() {
        try {
            mDisk.FlushFolder(FolderOf(mPath));
        } catch (const host::FileException& exception) {
            return {Outcome::NotKnown, Explain("flush folder of", exception), {}};
        }
        for (const std::string& temporary : GetKept().TakeOut(mPath)) Remove(temporary);
        return {Outcome::Done, {}, {}};
    }

    FileReplacement GiveUp(const host::FileException& exception) {
        if (mIsBegun) Remove(mTemporary, exception.SystemError());
        return {Outcome::NotDone, Explain("write", exception), {}};
    }

    FileReplacement Keep(const host::FileException& exception, bool mayBeThere) {
        FileReplacement replacement{Outcome::NotKnown, Explain("write", exception), {}};
        if (!mayBeThere) return replacement;
        const std::string told = JoinPath<std::string>(FolderOf(mPath), MakeToldSaveName(NameOf(mPath)));
        GetKept().Add(mPath, told);
        try {
            mDisk.Rename(mTemporary, told);
            replacement.mKept = told;
        } catch (const host::FileException&) {
            GetKept().Add(mPath, mTemporary);
        }
        Log(LogLevel::Warning, "what was to be written to " + mPath + " is kept in " +
                                   (replacement.mKept.empty() ? mTemporary : told));
        return replacement;
    }

    void Remove(const std::string& temporary, int reason = 0) {
        if (!RemoveTemporaryFile(mDisk, temporary, reason)) GetKept().Add(mPath, temporary);
    }

    host::FileException Explain(std::string_view operation, const host::FileException& exception) const {
        return host::FileException(operation, host::UTF8to16(mPath), exception.SystemError());
    }

    FileSystem& mDisk;
    const std::string& mPath;
    const std::string mTemporary;
    bool mIsBegun = false;
};

}  // namespace

FileReplacement ReplaceFile(FileSystem& fileSystem, const std::string& path, const std::string& bytes,
                            unsigned modeOfNewFile) {
    return Replacing(fileSystem, path).Run(bytes, modeOfNewFile);
}

void ReplaceFileOrThrow(FileSystem& fileSystem, const std::string& path, const std::string& bytes) {
    const FileReplacement replacement = ReplaceFile(fileSystem, path, bytes, 0600);
    if (replacement.mError) throw *replacement.mError;
}

}  // namespace desk
