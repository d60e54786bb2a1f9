#include "client/commands/clock.h"

#include "client/text.h"
#include "protocol/system_datetime.h"

namespace client {

ClockState decodeClock(std::span<const uint8_t> reply) {
    const auto told = layoutOf<DatetimeReply>(reply);
    return {
        .localTime = isoTime(fieldText(told.local_time)),
        .timezone = load(told.timezone),
        .daylightSaving = told.daylight_saving != 0,
        .ntp = told.ntp != 0,
        .ntpServer = fieldText(told.ntp_server),
    };
}

std::vector<uint8_t> encodeClock(const Login& login, const ClockChange& change) {
    DatetimeRequest request{};
    putText(request.local_time, change.localTime.empty() ? "00000000000000" : change.localTime);
    request.timezone = le16(change.timezone);
    request.daylight_saving = change.daylightSaving ? 1 : 0;
    request.ntp = change.ntp ? 1 : 0;
    putText(request.ntp_server, change.ntpServer);
    // The server's name ends the datagram, with its NUL.
    return protectedRequest(login, request, offsetof(DatetimeRequest, ntp_server) + change.ntpServer.size() + 1);
}

}  // namespace client
