#include "host/toolkit/DataTransfer.h"

#include "desk/toolkit/CustomDataTypes.h"

namespace desk {

std::map<std::string, std::string, std::less<>>& GetCustomDataTypes() {
    static std::map<std::string, std::string, std::less<>> types;
    return types;
}

}  // namespace desk

namespace host {

void RegisterCustomDataType(std::string_view type, std::string_view systemType) {
    desk::GetCustomDataTypes().emplace(type, systemType);
}

}  // namespace host
