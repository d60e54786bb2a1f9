#include "qvpctl/records.h"

#include "client/text.h"

using client::addressText;
using client::Camera;
using client::macText;

static Record textOrNull(const std::optional<std::string>& text) { return text ? Record(*text) : Record(nullptr); }

std::vector<std::string> problemsOf(const client::Found& found) {
    std::vector<std::string> problems;
    if (!found.isNear) problems.emplace_back("other-subnet");
    if (found.sharesAddress) problems.emplace_back("duplicate-address");
    if (found.sharesMac) problems.emplace_back("duplicate-mac");
    if (found.isElsewhere) problems.emplace_back("sender-differs");
    return problems;
}

// What only a reply tells is null in the record of a camera that was merely heard.
static Record repliedFields(const Camera& camera) {
    Record dns = Record::array();
    for (const Ipv4 server : camera.dns) dns.push_back(addressText(server));
    return {
        {"brand",          camera.brand                      },
        {"model",          camera.model                      },
        {"httpPort",       camera.httpPort                   },
        {"gateway",        addressText(camera.gateway)       },
        {"dns",            dns                               },
        {"dhcp",           camera.dhcp                       },
        {"localTime",      textOrNull(camera.localTime)      },
        {"timezone",       camera.timezone                   },
        {"daylightSaving", camera.daylightSaving             },
        {"url",            textOrNull(client::webUrl(camera))},
    };
}

Record recordOf(const client::Found& found) {
    const Camera& camera = found.camera;
    const Record replied = repliedFields(camera);
    const auto told = [&](const char* key) { return found.answered ? replied.at(key) : Record(nullptr); };
    return {
        {"mac",            macText(camera.mac)        },
        {"address",        addressText(camera.address)},
        {"name",           camera.name                },
        {"brand",          told("brand")              },
        {"product",        camera.product             },
        {"model",          told("model")              },
        {"firmware",       camera.firmware            },
        {"hardware",       camera.hardware            },
        {"httpPort",       told("httpPort")           },
        {"netmask",        addressText(camera.netmask)},
        {"gateway",        told("gateway")            },
        {"dns",            told("dns")                },
        {"dhcp",           told("dhcp")               },
        {"localTime",      told("localTime")          },
        {"timezone",       told("timezone")           },
        {"daylightSaving", told("daylightSaving")     },
        {"url",            told("url")                },
        {"interface",      found.interface.name       },
        {"answered",       found.answered             },
        {"problems",       problemsOf(found)          },
    };
}

std::string isoTime(time_t time) {
    tm parts{};
    char text[sizeof "2026-01-31T23:59:59+0100 and room for later centuries"];
    localtime_r(&time, &parts);
    strftime(text, sizeof text, "%FT%T%z", &parts);
    std::string result(text);
    return result.insert(result.size() - 2, ":");
}

Record recordOf(const client::Presence& presence, const std::string& interface, time_t arrival) {
    return {
        {"time",      isoTime(arrival)             },
        {"mac",       macText(presence.mac)        },
        {"address",   addressText(presence.address)},
        {"netmask",   addressText(presence.netmask)},
        {"name",      presence.name                },
        {"product",   presence.product             },
        {"firmware",  presence.firmware            },
        {"hardware",  presence.hardware            },
        {"sequence",  presence.sequence            },
        {"interface", interface                    },
    };
}

Record recordOf(const client::Site& site) {
    return {
        {"ssid",     site.ssid                                                        },
        {"signal",   site.signal                                                      },
        {"channel",  site.channel                                                     },
        {"security", site.security ? Record(client::nameOf(*site.security)) : Record()},
        {"adHoc",    site.adHoc                                                       },
    };
}

Record recordOf(const client::Setting& setting, const client::CameraState& state) {
    return {
        {"key",    setting.key                                                   },
        {"value",  setting.get != nullptr ? Record(setting.get(state)) : Record()},
        {"secret", setting.isSecret()                                            },
    };
}
