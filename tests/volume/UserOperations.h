#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

class Stack;

/// What a user does in one step, on a production of projects 0 to `kUserProjects` - 1 (`testproduction::Make`:
/// "Cuts" holds 1, "Reels" 2 and in folders 3 and 4), and what must have come of it whatever the volume did.
struct UserOperation {
    enum class Kind {
        /// `mFrom` is at `mTo` then, and nowhere else.
        Move,
        /// `mTo` is there, as a whole.
        Copy,
        /// Project 1 is in its version 1.
        Save,
        /// `mFrom` is open.
        Open,
        /// Nothing shows.
        Lock,
    };
    const char* mName;
    Kind mKind;
    std::function<void(Stack&)> mPrepare;
    std::function<void(Stack&)> mRun;
    /// Names in the production.
    std::string mFrom;
    std::string mTo = {};
    /// The projects that `mTo` is or holds.
    std::size_t mProjects = 1;
    /// The log alone tells when the folder for it cannot be made.
    bool mMayBeSilent = false;

    friend void PrintTo(const UserOperation& operation, std::ostream* out);
};

inline constexpr int kUserProjects = 6;

std::vector<UserOperation> MakeUserOperations();

/// Does the operation, in full; returns what the user was told.
std::vector<std::string> RunOperation(const UserOperation& operation, Stack& stack);

/// Expects, looked at behind the volume, that each project is there once, or twice where that was told, that
/// nothing is cut or hollow, and that what was told is true. True when the operation is done. A volume that
/// `keepsNames` for longer than anybody waits may leave an empty new folder; after a move in doubt a project
/// may be open where it was.
bool CheckOutcome(const UserOperation& operation, Stack& stack, const std::vector<std::string>& told,
                  bool keepsNames = false);

/// Expects that neither locks nor guards are left in the production `folder`, and no temporaries but those that
/// the machine removes at its next start, or that were told. Where a volume `keepsNames` for longer than
/// anybody waits, they may be left until its folders are listed again (after a move in doubt: until the next
/// start).
void CheckNothingIsLeft(const std::string& folder, const std::vector<std::string>& told,
                        bool keepsNames = false);
