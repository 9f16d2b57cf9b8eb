#include "desk/core/edges/Services.h"

namespace desk {

Services& GetServices() {
    static Services services;
    return services;
}

}  // namespace desk
