#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>

#include "host/core/Localizer.h"

namespace host {

namespace {

struct SystemError {
    int mNumber;
    const char* mKey;
};

/// Those that volumes answer with; the English texts are the system's own.
constexpr SystemError kErrors[] = {
    {EACCES, "$$$/Desk/SystemErrors/EACCES=Permission denied"},
    {EBUSY, "$$$/Desk/SystemErrors/EBUSY=Device or resource busy"},
    {ECANCELED, "$$$/Desk/SystemErrors/ECANCELED=Operation canceled"},
    {ECONNREFUSED, "$$$/Desk/SystemErrors/ECONNREFUSED=Connection refused"},
    {EDQUOT, "$$$/Desk/SystemErrors/EDQUOT=Disk quota exceeded"},
    {EEXIST, "$$$/Desk/SystemErrors/EEXIST=File exists"},
    {EFBIG, "$$$/Desk/SystemErrors/EFBIG=File too large"},
    {EHOSTDOWN, "$$$/Desk/SystemErrors/EHOSTDOWN=Host is down"},
    {EHOSTUNREACH, "$$$/Desk/SystemErrors/EHOSTUNREACH=No route to host"},
    {EINVAL, "$$$/Desk/SystemErrors/EINVAL=Invalid argument"},
    {EIO, "$$$/Desk/SystemErrors/EIO=Input/output error"},
    {EISDIR, "$$$/Desk/SystemErrors/EISDIR=Is a directory"},
    {ELOOP, "$$$/Desk/SystemErrors/ELOOP=Too many levels of symbolic links"},
    {EMFILE, "$$$/Desk/SystemErrors/EMFILE=Too many open files"},
    {EMLINK, "$$$/Desk/SystemErrors/EMLINK=Too many links"},
    {ENAMETOOLONG, "$$$/Desk/SystemErrors/ENAMETOOLONG=File name too long"},
    {ENETUNREACH, "$$$/Desk/SystemErrors/ENETUNREACH=Network is unreachable"},
    {ENOENT, "$$$/Desk/SystemErrors/ENOENT=No such file or directory"},
    {ENOSPC, "$$$/Desk/SystemErrors/ENOSPC=No space left on device"},
    {ENOTCONN, "$$$/Desk/SystemErrors/ENOTCONN=Transport endpoint is not connected"},
    {ENOTDIR, "$$$/Desk/SystemErrors/ENOTDIR=Not a directory"},
    {ENOTEMPTY, "$$$/Desk/SystemErrors/ENOTEMPTY=Directory not empty"},
    {EOPNOTSUPP, "$$$/Desk/SystemErrors/EOPNOTSUPP=Operation not supported"},
    {EPERM, "$$$/Desk/SystemErrors/EPERM=Operation not permitted"},
    {EROFS, "$$$/Desk/SystemErrors/EROFS=Read-only file system"},
    {ESTALE, "$$$/Desk/SystemErrors/ESTALE=Stale file handle"},
    {ETIMEDOUT, "$$$/Desk/SystemErrors/ETIMEDOUT=Connection timed out"},
    {ETXTBSY, "$$$/Desk/SystemErrors/ETXTBSY=Text file busy"},
    {EXDEV, "$$$/Desk/SystemErrors/EXDEV=Invalid cross-device link"},
};

}  // namespace

UTF16String DescribeSystemError(int systemError) {
    const auto* known = std::ranges::find(kErrors, systemError, &SystemError::mNumber);
    return known != std::end(kErrors) ? Localizer::Get()->Localize(known->mKey)
                                      : UTF8to16(std::generic_category().message(systemError));
}

}  // namespace host
