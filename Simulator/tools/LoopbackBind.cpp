// Preloaded by scripts/run-simulated.sh when the screen is served over Qt's
// VNC platform: that server listens on every interface and offers no option
// to choose one, so a bind to "any address" is turned into a bind to the
// loopback address. The desktop's screen is then reachable from this machine
// only, as a simulator's screen with its keys should be.

#include <dlfcn.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>

namespace {
using BindFunction = int (*)(int, const sockaddr*, socklen_t);

BindFunction RealBind() {
    static const auto real = reinterpret_cast<BindFunction>(dlsym(RTLD_NEXT, "bind"));
    return real;
}
}  // namespace

extern "C" int bind(int socket, const sockaddr* address, socklen_t length) {
    if (address != nullptr && address->sa_family == AF_INET && length >= sizeof(sockaddr_in)) {
        sockaddr_in local;
        std::memcpy(&local, address, sizeof local);
        if (local.sin_addr.s_addr == htonl(INADDR_ANY)) {
            local.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            return RealBind()(socket, reinterpret_cast<const sockaddr*>(&local), sizeof local);
        }
    } else if (address != nullptr && address->sa_family == AF_INET6 &&
               length >= sizeof(sockaddr_in6)) {
        sockaddr_in6 local;
        std::memcpy(&local, address, sizeof local);
        if (std::memcmp(&local.sin6_addr, &in6addr_any, sizeof in6addr_any) == 0) {
            // A dual-stack socket: the IPv4 loopback in its mapped form keeps
            // 127.0.0.1 reachable.
            static const unsigned char kMappedLoopback[16] = {0, 0, 0, 0, 0,    0,    0, 0,
                                                              0, 0, 0xff, 0xff, 127, 0, 0, 1};
            std::memcpy(&local.sin6_addr, kMappedLoopback, sizeof kMappedLoopback);
            return RealBind()(socket, reinterpret_cast<const sockaddr*>(&local), sizeof local);
        }
    }
    return RealBind()(socket, address, length);
}
