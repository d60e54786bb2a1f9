#include "qvpctl/boot.h"

#include <algorithm>

// A camera waits before it goes, so that its answer gets out.
static constexpr std::chrono::seconds kUntilGone(7);

std::optional<client::Found> awaitBoot(client::Link& link, client::Session& session, std::chrono::seconds patience) {
    const auto start = link.now();
    for (const auto gone = start + std::min(kUntilGone, patience); link.receiveUntil(gone);) continue;
    const auto left = patience - std::chrono::floor<std::chrono::seconds>(link.now() - start);
    return session.awaitReturn(left);
}
