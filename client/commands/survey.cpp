#include "client/commands/survey.h"

#include <algorithm>

#include "client/text.h"
#include "protocol/site_survey.h"

namespace client {

static constexpr uint8_t kUnknownCode = 15;

static std::optional<WifiSecurity> securityOf(const SiteEntry& entry) {
    const WifiSecurity codes{static_cast<uint8_t>(entry.authentication_channel & 0x0F),
                             static_cast<uint8_t>(entry.type_cipher >> 4)};
    if (codes == WifiSecurity{kUnknownCode, kUnknownCode}) return std::nullopt;
    return codes;
}

static Site siteOf(const SiteEntry& entry) {
    return {
        .ssid = fieldText(std::span(entry.ssid).first<32>()),
        .signal = entry.signal,
        .adHoc = (entry.type_cipher & 1) != 0,
        .security = securityOf(entry),
        .channel = static_cast<uint8_t>(entry.authentication_channel >> 4),
    };
}

// A slot behind the last network: empty, or what a camera makes of the padding behind its list.
static bool isPadding(const Site& site) { return site.ssid.empty() && site.signal == 0 && site.channel == 0; }

// The mark of more networks also stands behind padding; then nothing is missing.
Survey decodeSurvey(std::span<const uint8_t> reply) {
    const auto list = layoutOf<SiteListReply>(reply);
    Survey survey{{}, true};
    for (const SiteEntry& entry : list.entries) {
        const Site site = siteOf(entry);
        if (!isPadding(site)) survey.sites.push_back(site);
    }
    const bool isFull = survey.sites.size() == std::size(list.entries);
    survey.isComplete = !isFull || (list.continued[0] == 0 && list.continued[1] == 0);
    std::ranges::stable_sort(survey.sites, std::greater{}, &Site::signal);
    return survey;
}

}  // namespace client
