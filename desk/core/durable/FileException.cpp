#include "host/files/FileException.h"

#include <system_error>

namespace host {

FileException::FileException(std::string_view operation, const UTF16String& path, int systemError)
    : std::runtime_error(std::string(operation) + ' ' + UTF16to8(path) + ": " +
                         std::generic_category().message(systemError)),
      mOperation(operation),
      mPath(path),
      mSystemError(systemError) {}

FileException::~FileException() = default;

}  // namespace host
