#include "desk/core/names/TemporaryNames.h"

#include <QCryptographicHash>
#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include "desk/core/edges/Desktop.h"

namespace desk {

namespace {

constexpr std::string_view kPrefix = ".zutmp-";
constexpr std::string_view kSavePrefix = ".zusave-";
constexpr std::string_view kToldSavePrefix = ".zutold-";
constexpr std::string_view kFolderCopyPrefix = ".zucopy-";
constexpr std::string_view kLockPrefix = ".zulock-";
constexpr TemporaryPurpose kPurposes[] = {TemporaryPurpose::Save, TemporaryPurpose::ToldSave,
                                          TemporaryPurpose::FolderCopy, TemporaryPurpose::Lock};
constexpr std::size_t kLongestID = 64;
constexpr qsizetype kDigitsOfDigest = 16;
constexpr qsizetype kDigitsOfMachine = 32;

std::string_view PrefixOf(TemporaryPurpose purpose) {
    switch (purpose) {
        case TemporaryPurpose::Save:
            return kSavePrefix;
        case TemporaryPurpose::ToldSave:
            return kToldSavePrefix;
        case TemporaryPurpose::FolderCopy:
            return kFolderCopyPrefix;
        case TemporaryPurpose::Lock:
            break;
    }
    return kLockPrefix;
}

/// Identifiers of the system are short and hold nothing that a file name may not.
bool IsUsableID(std::string_view id) {
    constexpr std::string_view kUsable = "0123456789abcdefABCDEF-";
    return !id.empty() && id.size() <= kLongestID && id.find_first_not_of(kUsable) == std::string_view::npos;
}

template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= 0;
}

/// Takes off what stands before the first dot, and the dot.
std::string_view TakePart(std::string_view& text) {
    const std::size_t end = std::min(text.find('.'), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

std::string MakeDigest(std::string_view text, qsizetype digits) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
    return hash.result().toHex().left(digits).toStdString();
}

std::string MakeMachineDigest(const std::string& machineID, const host::UTF16String& machine) {
    return MakeDigest(machineID + '\0' + host::UTF16to8(machine), kDigitsOfMachine);
}

/// The nonce and the process, as the end of a name.
std::string WriteOwner(const LockRecord& owner) {
    if (owner.mMachineID.empty() || owner.mMachine.empty() || !IsUsableID(owner.mBootID)) return owner.mNonce;
    return owner.mNonce + '.' + MakeMachineDigest(owner.mMachineID, owner.mMachine) + '.' + owner.mBootID +
           '.' + std::to_string(owner.mPidNamespace) + '.' + std::to_string(owner.mPid) + '.' +
           std::to_string(owner.mProcessStart);
}

std::optional<TemporaryOwner> ReadOwner(std::string_view text) {
    if (text.ends_with('.')) return {};
    std::array<std::string_view, 6> parts;
    for (std::string_view& part : parts) part = TakePart(text);
    TemporaryOwner owner;
    owner.mRecord.mNonce = parts[0];
    owner.mMachineDigest = parts[1];
    owner.mRecord.mBootID = parts[2];
    const bool isWhole = text.empty() && IsUsableID(parts[1]) && IsUsableID(parts[2]) &&
                         ReadNumber(parts[3], owner.mRecord.mPidNamespace) &&
                         ReadNumber(parts[4], owner.mRecord.mPid) &&
                         ReadNumber(parts[5], owner.mRecord.mProcessStart);
    return isWhole ? std::optional(owner) : std::nullopt;
}

std::string DigestOf(std::string_view name) {
    return MakeDigest(name, kDigitsOfDigest);
}

}  // namespace

std::string MakeTemporaryName(const LockRecord& owner) {
    return std::string(kPrefix) + WriteOwner(owner);
}

std::string MakeTemporaryNameFor(TemporaryPurpose purpose, std::string_view target, const LockRecord& owner) {
    return std::string(PrefixOf(purpose)) + DigestOf(target) + '.' + WriteOwner(owner);
}

bool IsTemporaryName(std::string_view name) {
    return name.starts_with(kPrefix) || std::ranges::any_of(kPurposes, [name](TemporaryPurpose purpose) {
               return name.starts_with(PrefixOf(purpose));
           });
}

bool IsTemporaryOfDead(std::string_view name, const Desktop& desktop) {
    if (!name.starts_with(kPrefix)) return false;
    const auto owner = ReadOwner(name.substr(kPrefix.size()));
    return owner && owner->IsGone(desktop);
}

bool TemporaryOwner::IsGone(const Desktop& desktop) const {
    return mMachineDigest == MakeMachineDigest(desktop.MachineID(), desktop.MachineName()) &&
           FindProcessState(mRecord, desktop) == ProcessState::Gone;
}

bool TargetedTemporary::IsFor(std::string_view target) const {
    return DigestOf(target) == mTargetDigest;
}

std::optional<TargetedTemporary> ParseTargetedTemporary(std::string_view name) {
    for (const TemporaryPurpose purpose : kPurposes) {
        if (!name.starts_with(PrefixOf(purpose))) continue;
        name.remove_prefix(PrefixOf(purpose).size());
        const std::string_view digest = TakePart(name);
        const auto owner = ReadOwner(name);
        const bool isDigest = digest.size() == kDigitsOfDigest &&
                              digest.find_first_not_of("0123456789abcdef") == std::string_view::npos;
        if (!isDigest || !owner) return {};
        return TargetedTemporary{purpose, std::string(digest), *owner};
    }
    return {};
}

}  // namespace desk
