#include "support/site_list.h"

#include "handlers/qvp_function.h"
#include "landap/landap_function.h"
#include "support/captured_stderr.h"

namespace unit {

static std::string column(std::string text, std::size_t width) {
    text.resize(width, ' ');
    return text;
}

std::string siteLine(const Site& site) {
    return column(site.channel, 4) + column(site.ssid, 33) + column(site.bssid, 20) + column(site.security, 23) +
           column(site.signal, 10) + column(site.mode, 8) + column(site.type, 2) + "\n";
}

std::string heading() { return siteLine({"Ch", "SSID", "Security", "Signal(%)", "NT", "BSSID", "W-Mode"}); }

std::string networks(int count) {
    std::string text = heading();
    for (int index = 0; index < count; ++index) {
        Site site;
        site.ssid = "net " + std::to_string(index);
        site.signal = std::to_string(index);
        text += siteLine(site);
    }
    return text;
}

Bytes entry(const std::string& ssid, std::uint8_t signal, std::uint8_t typeAndCipher, std::uint8_t authAndChannel) {
    Bytes bytes(ssid.begin(), ssid.end());
    bytes.resize(33);
    bytes.insert(bytes.end(), {signal, typeAndCipher, authAndChannel});
    return bytes;
}

Bytes networkEntry(int index) {
    return entry("net " + std::to_string(index), static_cast<std::uint8_t>(index), 0x30, 0x64);
}

Bytes paddingEntry() { return entry("", 0x00, 0xF1, 0x0F); }

SiteSurveyTest::Fill SiteSurveyTest::fillFunction() const {
    return GetParam() == &primaryFamily() ? fillSiteSurveyInfo : landap_fillSiteSurveyInfo;
}

Outcome SiteSurveyTest::fill(const std::string& sites, int page) const {
    const std::vector<char> exact(sites.begin(), sites.end());  // no byte more than the size tells
    const Bytes datagram = request(check()).bytes();
    Outcome outcome{0, Bytes(1024), {}};
    const CapturedStderr captured;
    outcome.length =
        fillFunction()(datagram.data(), outcome.reply.data(), 1024, page, exact.data(), static_cast<int>(exact.size()));
    outcome.trace = linesOf(captured.text());
    return outcome;
}

Outcome SiteSurveyTest::fillPadded(const std::string& sites, int page) const {
    std::string padded = sites;
    padded.resize(21844);
    return fill(padded, page);
}

Packet SiteSurveyTest::page(const std::vector<Bytes>& entries, bool continued) const {
    Packet packet = reply(check());
    for (std::size_t slot = 0; slot < entries.size(); ++slot) packet.put(22 + 36 * slot, entries[slot]);
    if (continued) packet.put(744, {0xFF, 0xFF});
    return packet;
}

Packet SiteSurveyTest::paddedPage(std::vector<Bytes> entries) const {
    entries.resize(20, paddingEntry());
    return page(entries, true);
}

}  // namespace unit
