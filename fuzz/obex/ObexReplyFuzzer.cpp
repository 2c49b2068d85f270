// OBEX replies on arbitrary bytes: never a crash, and what is accepted takes
// exactly the bytes it was given.

#include <cstddef>
#include <cstdint>
#include <string>

#include "Common/Bluetooth/ObexPacket.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const bool connect : {false, true}) {
        std::string error;
        const auto reply = obex::ParseReply(data, size, connect, error);
        if (!reply) {
            if (error.empty()) __builtin_trap();
            continue;
        }
        std::size_t used = connect ? 7 : 3;
        for (const obex::Header& header : reply->headers) used += header.WireSize();
        if (used != size) __builtin_trap();
    }
    return 0;
}
