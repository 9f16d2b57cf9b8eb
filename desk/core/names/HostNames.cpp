#include "desk/core/names/HostNames.h"

#include <sys/random.h>

#include <QCryptographicHash>
#include <array>
#include <random>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/names/TemporaryNames.h"

namespace desk {

namespace {

constexpr std::string_view kGuardPrefix = ".zuguard-";
constexpr std::size_t kDigitsOfNonce = 32;

/// This process.
LockRecord MakeOwner() {
    LockRecord owner;
    if (const Desktop* desktop = GetServices().mDesktop)
        owner = MakeLockRecord(*desktop, {}, desktop->MachineName());
    owner.mNonce = MakeNonce();
    return owner;
}

}  // namespace

bool IsLockFileName(std::string_view name) {
    return name.starts_with('.') && name.ends_with(".lock") &&
           !GetProjectNameOfLockFile(host::UTF8to16(name)).empty();
}

std::string GetGuardName(std::string_view nonce) {
    return std::string(kGuardPrefix) + std::string(nonce);
}

std::string GetGuardName(const std::string& lockName, const std::string& content) {
    if (const LockRecord record = ParseLockRecord(content); record.mIsReadable)
        return GetGuardName(record.mNonce);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(QByteArray::fromStdString(lockName + '\0' + content));
    return GetGuardName(hash.result().toHex().left(kDigitsOfNonce).toStdString());
}

bool IsGuardName(std::string_view name) {
    return name.starts_with(kGuardPrefix) && name.size() == kGuardPrefix.size() + kDigitsOfNonce;
}

bool MayBeLeftover(std::string_view name) {
    return name.starts_with('.') && (IsTemporaryName(name) || IsGuardName(name) || IsLockFileName(name));
}

bool IsHiddenName(std::string_view name, ItemKind kind) {
    if (!name.starts_with('.')) return false;
    return kind == ItemKind::Folder || name.starts_with(".nfs") || name.starts_with(".fuse_hidden") ||
           IsTemporaryName(name) || IsGuardName(name) || name == kTrashRecordsName || IsLockFileName(name);
}

std::string MakeNonce() {
    std::array<unsigned char, 16> bytes;
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        std::random_device device;
        for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(device());
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string nonce;
    for (unsigned char byte : bytes) {
        nonce += kDigits[byte >> 4];
        nonce += kDigits[byte & 15];
    }
    return nonce;
}

std::string MakeTemporaryName() {
    return MakeTemporaryName(MakeOwner());
}

std::string MakeSaveName(std::string_view target) {
    return MakeTemporaryNameFor(TemporaryPurpose::Save, target, MakeOwner());
}

std::string MakeToldSaveName(std::string_view target) {
    return MakeTemporaryNameFor(TemporaryPurpose::ToldSave, target, MakeOwner());
}

std::string MakeFolderCopyName(std::string_view target) {
    return MakeTemporaryNameFor(TemporaryPurpose::FolderCopy, target, MakeOwner());
}

}  // namespace desk
