#include "client/time_zones.h"

#include <date/tz.h>
#include <strings.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace client {

static constexpr TimeZone kTimeZones[] = {
    {1,   "Etc/GMT+12",                     "International Date Line West"    },
    {2,   "Pacific/Pago_Pago",              "Pago Pago, Midway"               },
    {3,   "Pacific/Niue",                   "Alofi"                           },
    {4,   "Pacific/Honolulu",               "Honolulu, Hilo"                  },
    {5,   "America/Adak",                   "Adak"                            },
    {6,   "Pacific/Marquesas",              "Marquesas Islands"               },
    {7,   "America/Anchorage",              "Anchorage, Juneau"               },
    {8,   "Pacific/Gambier",                "Gambier Islands"                 },
    {9,   "America/Los_Angeles",            "Los Angeles, Seattle"            },
    {10,  "America/Tijuana",                "Tijuana"                         },
    {11,  "Pacific/Pitcairn",               "Pitcairn Islands"                },
    {12,  "America/Denver",                 "Denver, Salt Lake City"          },
    {13,  "America/Edmonton",               "Calgary, Edmonton"               },
    {14,  "America/Phoenix",                "Phoenix"                         },
    {15,  "America/Mazatlan",               "Mazatlan, Hermosillo"            },
    {16,  "America/Whitehorse",             "Whitehorse, Yukon"               },
    {17,  "America/Chicago",                "Chicago, Dallas, Houston"        },
    {18,  "America/Winnipeg",               "Winnipeg"                        },
    {19,  "America/Mexico_City",            "Mexico City, Monterrey"          },
    {20,  "America/Guatemala",              "Guatemala, San Jose, Managua"    },
    {21,  "America/Regina",                 "Regina, Saskatoon"               },
    {22,  "Pacific/Galapagos",              "Galapagos Islands"               },
    {23,  "Pacific/Easter",                 "Easter Island"                   },
    {24,  "America/New_York",               "New York, Miami, Washington"     },
    {25,  "America/Toronto",                "Toronto, Montreal"               },
    {26,  "America/Havana",                 "Havana"                          },
    {27,  "America/Port-au-Prince",         "Port-au-Prince"                  },
    {28,  "America/Panama",                 "Panama, Kingston"                },
    {29,  "America/Cancun",                 "Cancun"                          },
    {30,  "America/Bogota",                 "Bogota"                          },
    {31,  "America/Lima",                   "Lima, Quito"                     },
    {32,  "America/Halifax",                "Halifax, Bermuda"                },
    {33,  "America/Puerto_Rico",            "San Juan, Santo Domingo"         },
    {34,  "America/Caracas",                "Caracas"                         },
    {35,  "America/La_Paz",                 "La Paz, Georgetown"              },
    {36,  "America/Manaus",                 "Manaus, Cuiaba"                  },
    {37,  "America/Santiago",               "Santiago, Valparaiso"            },
    {38,  "America/St_Johns",               "St. John's, Newfoundland"        },
    {39,  "America/Sao_Paulo",              "Brasilia, Sao Paulo"             },
    {40,  "America/Argentina/Buenos_Aires", "Buenos Aires, Cordoba"           },
    {41,  "America/Montevideo",             "Montevideo"                      },
    {42,  "America/Asuncion",               "Asuncion"                        },
    {43,  "America/Paramaribo",             "Paramaribo, Cayenne"             },
    {44,  "America/Punta_Arenas",           "Punta Arenas"                    },
    {45,  "America/Miquelon",               "Saint Pierre and Miquelon"       },
    {46,  "America/Nuuk",                   "Nuuk"                            },
    {47,  "America/Noronha",                "Fernando de Noronha"             },
    {48,  "Atlantic/South_Georgia",         "South Georgia"                   },
    {49,  "Atlantic/Azores",                "Azores"                          },
    {50,  "Atlantic/Cape_Verde",            "Praia"                           },
    {51,  "UTC",                            "Coordinated Universal Time"      },
    {52,  "Europe/London",                  "London, Edinburgh"               },
    {53,  "Europe/Dublin",                  "Dublin"                          },
    {54,  "Europe/Lisbon",                  "Lisbon, Porto"                   },
    {55,  "Atlantic/Canary",                "Canary Islands"                  },
    {56,  "Atlantic/Reykjavik",             "Reykjavik"                       },
    {57,  "Africa/Abidjan",                 "Accra, Abidjan, Dakar"           },
    {58,  "Africa/Casablanca",              "Casablanca, Rabat"               },
    {59,  "Europe/Amsterdam",               "Amsterdam, Brussels"             },
    {60,  "Europe/Paris",                   "Paris, Madrid"                   },
    {61,  "Europe/Berlin",                  "Berlin, Rome, Vienna, Zurich"    },
    {62,  "Europe/Stockholm",               "Stockholm, Oslo, Copenhagen"     },
    {63,  "Europe/Warsaw",                  "Warsaw, Prague, Budapest"        },
    {64,  "Europe/Belgrade",                "Belgrade, Zagreb, Sarajevo"      },
    {65,  "Africa/Algiers",                 "Algiers, Tunis"                  },
    {66,  "Africa/Lagos",                   "Lagos, Kinshasa, Luanda"         },
    {67,  "Europe/Athens",                  "Athens, Sofia"                   },
    {68,  "Europe/Bucharest",               "Bucharest"                       },
    {69,  "Europe/Helsinki",                "Helsinki, Tallinn, Riga, Vilnius"},
    {70,  "Europe/Kiev",                    "Kyiv"                            },
    {71,  "Asia/Nicosia",                   "Nicosia"                         },
    {72,  "Asia/Beirut",                    "Beirut"                          },
    {73,  "Asia/Jerusalem",                 "Jerusalem, Tel Aviv"             },
    {74,  "Africa/Cairo",                   "Cairo, Alexandria"               },
    {75,  "Europe/Kaliningrad",             "Kaliningrad"                     },
    {76,  "Africa/Tripoli",                 "Tripoli"                         },
    {77,  "Africa/Maputo",                  "Harare, Lusaka, Maputo"          },
    {78,  "Africa/Johannesburg",            "Johannesburg, Cape Town"         },
    {79,  "Europe/Istanbul",                "Istanbul, Ankara"                },
    {80,  "Europe/Moscow",                  "Moscow, Saint Petersburg"        },
    {81,  "Europe/Minsk",                   "Minsk"                           },
    {82,  "Asia/Amman",                     "Amman, Damascus"                 },
    {83,  "Asia/Baghdad",                   "Baghdad"                         },
    {84,  "Asia/Riyadh",                    "Riyadh, Kuwait, Doha"            },
    {85,  "Africa/Nairobi",                 "Nairobi, Addis Ababa"            },
    {86,  "Asia/Tehran",                    "Tehran"                          },
    {87,  "Asia/Dubai",                     "Dubai, Abu Dhabi, Muscat"        },
    {88,  "Europe/Samara",                  "Samara, Saratov"                 },
    {89,  "Asia/Tbilisi",                   "Tbilisi"                         },
    {90,  "Asia/Yerevan",                   "Yerevan"                         },
    {91,  "Asia/Baku",                      "Baku"                            },
    {92,  "Indian/Mauritius",               "Port Louis, Reunion"             },
    {93,  "Asia/Kabul",                     "Kabul"                           },
    {94,  "Asia/Yekaterinburg",             "Yekaterinburg"                   },
    {95,  "Asia/Tashkent",                  "Tashkent, Samarkand"             },
    {96,  "Asia/Almaty",                    "Almaty, Astana"                  },
    {97,  "Asia/Karachi",                   "Karachi, Islamabad"              },
    {98,  "Indian/Maldives",                "Male"                            },
    {99,  "Asia/Kolkata",                   "Delhi, Mumbai, Kolkata"          },
    {100, "Asia/Colombo",                   "Colombo"                         },
    {101, "Asia/Kathmandu",                 "Kathmandu"                       },
    {102, "Asia/Dhaka",                     "Dhaka"                           },
    {103, "Asia/Bishkek",                   "Bishkek"                         },
    {104, "Asia/Omsk",                      "Omsk"                            },
    {105, "Asia/Thimphu",                   "Thimphu"                         },
    {106, "Asia/Yangon",                    "Yangon"                          },
    {107, "Asia/Bangkok",                   "Bangkok, Hanoi, Phnom Penh"      },
    {108, "Asia/Jakarta",                   "Jakarta"                         },
    {109, "Asia/Novosibirsk",               "Novosibirsk"                     },
    {110, "Asia/Krasnoyarsk",               "Krasnoyarsk"                     },
    {111, "Asia/Hovd",                      "Hovd"                            },
    {112, "Asia/Shanghai",                  "Beijing, Shanghai"               },
    {113, "Asia/Hong_Kong",                 "Hong Kong"                       },
    {114, "Asia/Taipei",                    "Taipei"                          },
    {115, "Asia/Singapore",                 "Singapore, Kuala Lumpur"         },
    {116, "Asia/Manila",                    "Manila"                          },
    {117, "Asia/Makassar",                  "Makassar, Denpasar"              },
    {118, "Asia/Ulaanbaatar",               "Ulaanbaatar"                     },
    {119, "Asia/Irkutsk",                   "Irkutsk"                         },
    {120, "Australia/Perth",                "Perth"                           },
    {121, "Australia/Eucla",                "Eucla"                           },
    {122, "Asia/Tokyo",                     "Tokyo, Osaka, Sapporo"           },
    {123, "Asia/Seoul",                     "Seoul"                           },
    {124, "Asia/Pyongyang",                 "Pyongyang"                       },
    {125, "Asia/Jayapura",                  "Jayapura"                        },
    {126, "Asia/Yakutsk",                   "Yakutsk, Chita"                  },
    {127, "Australia/Darwin",               "Darwin"                          },
    {128, "Australia/Adelaide",             "Adelaide"                        },
    {129, "Australia/Brisbane",             "Brisbane"                        },
    {130, "Australia/Sydney",               "Sydney, Melbourne, Canberra"     },
    {131, "Australia/Hobart",               "Hobart"                          },
    {132, "Pacific/Guam",                   "Guam, Saipan"                    },
    {133, "Pacific/Port_Moresby",           "Port Moresby"                    },
    {134, "Asia/Vladivostok",               "Vladivostok"                     },
    {135, "Australia/Lord_Howe",            "Lord Howe Island"                },
    {136, "Asia/Magadan",                   "Magadan"                         },
    {137, "Asia/Sakhalin",                  "Sakhalin"                        },
    {138, "Pacific/Noumea",                 "Noumea"                          },
    {139, "Pacific/Guadalcanal",            "Honiara"                         },
    {140, "Pacific/Norfolk",                "Norfolk Island"                  },
    {141, "Pacific/Auckland",               "Auckland, Wellington"            },
    {142, "Pacific/Fiji",                   "Suva"                            },
    {143, "Asia/Kamchatka",                 "Petropavlovsk-Kamchatsky"        },
    {144, "Pacific/Majuro",                 "Majuro, Tarawa"                  },
    {145, "Pacific/Chatham",                "Chatham Islands"                 },
    {146, "Pacific/Tongatapu",              "Nuku'alofa"                      },
    {147, "Pacific/Apia",                   "Apia"                            },
    {148, "Pacific/Kiritimati",             "Kiritimati"                      },
};

std::span<const TimeZone> timeZones() { return kTimeZones; }

const TimeZone* findTimeZone(uint16_t id) {
    const auto* zone = std::ranges::find(kTimeZones, id, &TimeZone::id);
    return zone != std::end(kTimeZones) ? zone : nullptr;
}

static bool equalsIgnoringCase(std::string_view one, std::string_view other) {
    return one.size() == other.size() && strncasecmp(one.data(), other.data(), one.size()) == 0;
}

// The city of a name of the database: "America/St_Johns" is "St Johns".
static std::string cityOf(std::string_view name) {
    std::string city(name.substr(name.rfind('/') + 1));
    std::ranges::replace(city, '_', ' ');
    return city;
}

static bool listsPlace(std::string_view places, std::string_view wanted) {
    while (!places.empty()) {
        const size_t end = std::min(places.find(", "), places.size());
        if (equalsIgnoringCase(places.substr(0, end), wanted)) return true;
        places.remove_prefix(std::min(end + 2, places.size()));
    }
    return false;
}

const TimeZone* parseTimeZone(std::string_view text) {
    uint16_t id = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), id).ptr == text.data() + text.size() && !text.empty()) {
        return findTimeZone(id);
    }
    const auto isNamed = [&](const TimeZone& zone) { return equalsIgnoringCase(zone.name, text); };
    const std::string city = cityOf(text);
    const auto isPlace = [&](const TimeZone& zone) {
        return listsPlace(zone.places, city) || equalsIgnoringCase(cityOf(zone.name), city);
    };
    const TimeZone* zone = std::ranges::find_if(kTimeZones, isNamed);
    if (zone == std::end(kTimeZones)) zone = std::ranges::find_if(kTimeZones, isPlace);
    return zone != std::end(kTimeZones) ? zone : nullptr;
}

// The database counts Dublin's winter as the exception; its people and the cameras count its summer as that.
static std::chrono::seconds standardOffset(const date::time_zone& zone, const date::sys_info& info) {
    const bool isSummerTime = (info.save.count() != 0) != (zone.name() == "Europe/Dublin");
    return isSummerTime ? zone.get_info(info.end).offset : info.offset;
}

std::optional<std::string> localTimeIn(const TimeZone& zone, bool daylightSaving,
                                       std::chrono::system_clock::time_point moment) try {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
    const date::time_zone& rules = *date::locate_zone(zone.name);
    const date::sys_info info = rules.get_info(seconds);
    const auto offset = daylightSaving ? info.offset : standardOffset(rules, info);
    return date::format("%Y%m%d%H%M%S", seconds + offset);
} catch (const std::runtime_error&) {
    return std::nullopt;
}

}  // namespace client
