#include "time_zone/zone_table.h"

#include "time_zone/zone_text.h"

// Numbers are kept by cameras and tools: a zone keeps its own for ever, and a zone that is dropped leaves a gap. Wire
// id 0 stays free, because tools are sent 0 for a zone that has no id. Rules as of 2026. Dublin counts its winter as
// standard time here, as its people do, so that leaving out daylight saving gives GMT.
static constexpr TimeZone kTimeZones[] = {
    {10,   1,   "<-12>12",                                      "International Date Line West"    },
    {20,   2,   "SST11",                                        "Pago Pago, Midway"               },
    {30,   3,   "<-11>11",                                      "Alofi"                           },
    {40,   4,   "HST10",                                        "Honolulu, Hilo"                  },
    {50,   5,   "HST10HDT,M3.2.0,M11.1.0",                      "Adak"                            },
    {60,   6,   "<-0930>9:30",                                  "Marquesas Islands"               },
    {70,   7,   "AKST9AKDT,M3.2.0,M11.1.0",                     "Anchorage, Juneau"               },
    {80,   8,   "<-09>9",                                       "Gambier Islands"                 },
    {90,   9,   "PST8PDT,M3.2.0,M11.1.0",                       "Los Angeles, Seattle"            },
    {100,  10,  "PST8PDT,M3.2.0,M11.1.0",                       "Tijuana"                         },
    {110,  11,  "<-08>8",                                       "Pitcairn Islands"                },
    {120,  12,  "MST7MDT,M3.2.0,M11.1.0",                       "Denver, Salt Lake City"          },
    {130,  13,  "MST7MDT,M3.2.0,M11.1.0",                       "Calgary, Edmonton"               },
    {140,  14,  "MST7",                                         "Phoenix"                         },
    {150,  15,  "MST7",                                         "Mazatlan, Hermosillo"            },
    {160,  16,  "MST7",                                         "Whitehorse, Yukon"               },
    {170,  17,  "CST6CDT,M3.2.0,M11.1.0",                       "Chicago, Dallas, Houston"        },
    {180,  18,  "CST6CDT,M3.2.0,M11.1.0",                       "Winnipeg"                        },
    {190,  19,  "CST6",                                         "Mexico City, Monterrey"          },
    {200,  20,  "CST6",                                         "Guatemala, San Jose, Managua"    },
    {210,  21,  "CST6",                                         "Regina, Saskatoon"               },
    {220,  22,  "<-06>6",                                       "Galapagos Islands"               },
    {230,  23,  "<-06>6<-05>,M9.1.6/22,M4.1.6/22",              "Easter Island"                   },
    {240,  24,  "EST5EDT,M3.2.0,M11.1.0",                       "New York, Miami, Washington"     },
    {250,  25,  "EST5EDT,M3.2.0,M11.1.0",                       "Toronto, Montreal"               },
    {260,  26,  "CST5CDT,M3.2.0/0,M11.1.0/1",                   "Havana"                          },
    {270,  27,  "EST5EDT,M3.2.0,M11.1.0",                       "Port-au-Prince"                  },
    {280,  28,  "EST5",                                         "Panama, Kingston"                },
    {290,  29,  "EST5",                                         "Cancun"                          },
    {300,  30,  "<-05>5",                                       "Bogota"                          },
    {310,  31,  "<-05>5",                                       "Lima, Quito"                     },
    {320,  32,  "AST4ADT,M3.2.0,M11.1.0",                       "Halifax, Bermuda"                },
    {330,  33,  "AST4",                                         "San Juan, Santo Domingo"         },
    {340,  34,  "<-04>4",                                       "Caracas"                         },
    {350,  35,  "<-04>4",                                       "La Paz, Georgetown"              },
    {360,  36,  "<-04>4",                                       "Manaus, Cuiaba"                  },
    {370,  37,  "<-04>4<-03>,M9.1.6/24,M4.1.6/24",              "Santiago, Valparaiso"            },
    {380,  38,  "NST3:30NDT,M3.2.0,M11.1.0",                    "St. John's, Newfoundland"        },
    {390,  39,  "<-03>3",                                       "Brasilia, Sao Paulo"             },
    {400,  40,  "<-03>3",                                       "Buenos Aires, Cordoba"           },
    {410,  41,  "<-03>3",                                       "Montevideo"                      },
    {420,  42,  "<-03>3",                                       "Asuncion"                        },
    {430,  43,  "<-03>3",                                       "Paramaribo, Cayenne"             },
    {440,  44,  "<-03>3",                                       "Punta Arenas"                    },
    {450,  45,  "<-03>3<-02>,M3.2.0,M11.1.0",                   "Saint Pierre and Miquelon"       },
    {460,  46,  "<-02>2<-01>,M3.5.0/-1,M10.5.0/0",              "Nuuk"                            },
    {470,  47,  "<-02>2",                                       "Fernando de Noronha"             },
    {480,  48,  "<-02>2",                                       "South Georgia"                   },
    {490,  49,  "<-01>1<+00>,M3.5.0/0,M10.5.0/1",               "Azores"                          },
    {500,  50,  "<-01>1",                                       "Praia"                           },
    {510,  51,  "UTC0",                                         "Coordinated Universal Time"      },
    {520,  52,  "GMT0BST,M3.5.0/1,M10.5.0",                     "London, Edinburgh"               },
    {530,  53,  "GMT0IST,M3.5.0/1,M10.5.0",                     "Dublin"                          },
    {540,  54,  "WET0WEST,M3.5.0/1,M10.5.0",                    "Lisbon, Porto"                   },
    {550,  55,  "WET0WEST,M3.5.0/1,M10.5.0",                    "Canary Islands"                  },
    {560,  56,  "GMT0",                                         "Reykjavik"                       },
    {570,  57,  "GMT0",                                         "Accra, Abidjan, Dakar"           },
    {580,  58,  "<+01>-1",                                      "Casablanca, Rabat"               },
    {590,  59,  "CET-1CEST,M3.5.0,M10.5.0/3",                   "Amsterdam, Brussels"             },
    {600,  60,  "CET-1CEST,M3.5.0,M10.5.0/3",                   "Paris, Madrid"                   },
    {610,  61,  "CET-1CEST,M3.5.0,M10.5.0/3",                   "Berlin, Rome, Vienna, Zurich"    },
    {620,  62,  "CET-1CEST,M3.5.0,M10.5.0/3",                   "Stockholm, Oslo, Copenhagen"     },
    {630,  63,  "CET-1CEST,M3.5.0,M10.5.0/3",                   "Warsaw, Prague, Budapest"        },
    {640,  64,  "CET-1CEST,M3.5.0,M10.5.0/3",                   "Belgrade, Zagreb, Sarajevo"      },
    {650,  65,  "CET-1",                                        "Algiers, Tunis"                  },
    {660,  66,  "WAT-1",                                        "Lagos, Kinshasa, Luanda"         },
    {670,  67,  "EET-2EEST,M3.5.0/3,M10.5.0/4",                 "Athens, Sofia"                   },
    {680,  68,  "EET-2EEST,M3.5.0/3,M10.5.0/4",                 "Bucharest"                       },
    {690,  69,  "EET-2EEST,M3.5.0/3,M10.5.0/4",                 "Helsinki, Tallinn, Riga, Vilnius"},
    {700,  70,  "EET-2EEST,M3.5.0/3,M10.5.0/4",                 "Kyiv"                            },
    {710,  71,  "EET-2EEST,M3.5.0/3,M10.5.0/4",                 "Nicosia"                         },
    {720,  72,  "EET-2EEST,M3.5.0/0,M10.5.0/0",                 "Beirut"                          },
    {730,  73,  "IST-2IDT,M3.4.4/26,M10.5.0",                   "Jerusalem, Tel Aviv"             },
    {740,  74,  "EET-2EEST,M4.5.5/0,M10.5.4/24",                "Cairo, Alexandria"               },
    {750,  75,  "EET-2",                                        "Kaliningrad"                     },
    {760,  76,  "EET-2",                                        "Tripoli"                         },
    {770,  77,  "CAT-2",                                        "Harare, Lusaka, Maputo"          },
    {780,  78,  "SAST-2",                                       "Johannesburg, Cape Town"         },
    {790,  79,  "<+03>-3",                                      "Istanbul, Ankara"                },
    {800,  80,  "MSK-3",                                        "Moscow, Saint Petersburg"        },
    {810,  81,  "<+03>-3",                                      "Minsk"                           },
    {820,  82,  "<+03>-3",                                      "Amman, Damascus"                 },
    {830,  83,  "<+03>-3",                                      "Baghdad"                         },
    {840,  84,  "<+03>-3",                                      "Riyadh, Kuwait, Doha"            },
    {850,  85,  "EAT-3",                                        "Nairobi, Addis Ababa"            },
    {860,  86,  "<+0330>-3:30",                                 "Tehran"                          },
    {870,  87,  "<+04>-4",                                      "Dubai, Abu Dhabi, Muscat"        },
    {880,  88,  "<+04>-4",                                      "Samara, Saratov"                 },
    {890,  89,  "<+04>-4",                                      "Tbilisi"                         },
    {900,  90,  "<+04>-4",                                      "Yerevan"                         },
    {910,  91,  "<+04>-4",                                      "Baku"                            },
    {920,  92,  "<+04>-4",                                      "Port Louis, Reunion"             },
    {930,  93,  "<+0430>-4:30",                                 "Kabul"                           },
    {940,  94,  "<+05>-5",                                      "Yekaterinburg"                   },
    {950,  95,  "<+05>-5",                                      "Tashkent, Samarkand"             },
    {960,  96,  "<+05>-5",                                      "Almaty, Astana"                  },
    {970,  97,  "PKT-5",                                        "Karachi, Islamabad"              },
    {980,  98,  "<+05>-5",                                      "Male"                            },
    {990,  99,  "IST-5:30",                                     "Delhi, Mumbai, Kolkata"          },
    {1000, 100, "<+0530>-5:30",                                 "Colombo"                         },
    {1010, 101, "<+0545>-5:45",                                 "Kathmandu"                       },
    {1020, 102, "<+06>-6",                                      "Dhaka"                           },
    {1030, 103, "<+06>-6",                                      "Bishkek"                         },
    {1040, 104, "<+06>-6",                                      "Omsk"                            },
    {1050, 105, "<+06>-6",                                      "Thimphu"                         },
    {1060, 106, "<+0630>-6:30",                                 "Yangon"                          },
    {1070, 107, "<+07>-7",                                      "Bangkok, Hanoi, Phnom Penh"      },
    {1080, 108, "WIB-7",                                        "Jakarta"                         },
    {1090, 109, "<+07>-7",                                      "Novosibirsk"                     },
    {1100, 110, "<+07>-7",                                      "Krasnoyarsk"                     },
    {1110, 111, "<+07>-7",                                      "Hovd"                            },
    {1120, 112, "CST-8",                                        "Beijing, Shanghai"               },
    {1130, 113, "HKT-8",                                        "Hong Kong"                       },
    {1140, 114, "CST-8",                                        "Taipei"                          },
    {1150, 115, "<+08>-8",                                      "Singapore, Kuala Lumpur"         },
    {1160, 116, "PST-8",                                        "Manila"                          },
    {1170, 117, "WITA-8",                                       "Makassar, Denpasar"              },
    {1180, 118, "<+08>-8",                                      "Ulaanbaatar"                     },
    {1190, 119, "<+08>-8",                                      "Irkutsk"                         },
    {1200, 120, "AWST-8",                                       "Perth"                           },
    {1210, 121, "<+0845>-8:45",                                 "Eucla"                           },
    {1220, 122, "JST-9",                                        "Tokyo, Osaka, Sapporo"           },
    {1230, 123, "KST-9",                                        "Seoul"                           },
    {1240, 124, "KST-9",                                        "Pyongyang"                       },
    {1250, 125, "WIT-9",                                        "Jayapura"                        },
    {1260, 126, "<+09>-9",                                      "Yakutsk, Chita"                  },
    {1270, 127, "ACST-9:30",                                    "Darwin"                          },
    {1280, 128, "ACST-9:30ACDT,M10.1.0,M4.1.0/3",               "Adelaide"                        },
    {1290, 129, "AEST-10",                                      "Brisbane"                        },
    {1300, 130, "AEST-10AEDT,M10.1.0,M4.1.0/3",                 "Sydney, Melbourne, Canberra"     },
    {1310, 131, "AEST-10AEDT,M10.1.0,M4.1.0/3",                 "Hobart"                          },
    {1320, 132, "ChST-10",                                      "Guam, Saipan"                    },
    {1330, 133, "<+10>-10",                                     "Port Moresby"                    },
    {1340, 134, "<+10>-10",                                     "Vladivostok"                     },
    {1350, 135, "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",         "Lord Howe Island"                },
    {1360, 136, "<+11>-11",                                     "Magadan"                         },
    {1370, 137, "<+11>-11",                                     "Sakhalin"                        },
    {1380, 138, "<+11>-11",                                     "Noumea"                          },
    {1390, 139, "<+11>-11",                                     "Honiara"                         },
    {1400, 140, "<+11>-11<+12>,M10.1.0,M4.1.0/3",               "Norfolk Island"                  },
    {1410, 141, "NZST-12NZDT,M9.5.0,M4.1.0/3",                  "Auckland, Wellington"            },
    {1420, 142, "<+12>-12",                                     "Suva"                            },
    {1430, 143, "<+12>-12",                                     "Petropavlovsk-Kamchatsky"        },
    {1440, 144, "<+12>-12",                                     "Majuro, Tarawa"                  },
    {1450, 145, "<+1245>-12:45<+1345>,M9.5.0/2:45,M4.1.0/3:45", "Chatham Islands"                 },
    {1460, 146, "<+13>-13",                                     "Nuku'alofa"                      },
    {1470, 147, "<+13>-13",                                     "Apia"                            },
    {1480, 148, "<+14>-14",                                     "Kiritimati"                      },
};

static constexpr int kCount = sizeof kTimeZones / sizeof kTimeZones[0];

static constexpr bool isBefore(const TimeZone& one, const TimeZone& other) {
    return one.id < other.id && one.wireId < other.wireId &&
           readStandardTime(one.rule).offset <= readStandardTime(other.rule).offset;
}

static constexpr bool isSorted() {
    for (int row = 1; row < kCount; row++) {
        if (!isBefore(kTimeZones[row - 1], kTimeZones[row])) return false;
    }
    return true;
}

static constexpr bool isComplete(const TimeZone& zone) {
    StandardTime standard = readStandardTime(zone.rule);
    int length = standard.textLength;
    while (zone.rule[length] != '\0') length++;
    return zone.id > 0 && zone.wireId > 0 && zone.label[0] != '\0' && length < kTimeZoneRuleSize &&
           standard.nameLength >= 3 && standard.nameLength <= 5;
}

static constexpr bool areComplete() {
    for (const TimeZone& zone : kTimeZones) {
        if (!isComplete(zone)) return false;
    }
    return true;
}

static_assert(kCount >= 75);
static_assert(isSorted(), "ids ascend, none twice, and the zones go from west to east");
static_assert(areComplete(), "every zone has both ids, a label, and an abbreviation of 3 to 5 characters");
static_assert(readStandardTime(kTimeZones[0].rule).offset == -12 * 3600);
static_assert(readStandardTime(kTimeZones[kCount - 1].rule).offset == 14 * 3600);

int timeZoneCount() { return kCount; }

const TimeZone* timeZoneAt(int row) { return row >= 0 && row < kCount ? &kTimeZones[row] : nullptr; }

const TimeZone* findTimeZone(int id) {
    int first = 0;
    int end = kCount;
    while (first < end) {
        const int middle = (first + end) / 2;
        if (kTimeZones[middle].id == id) return &kTimeZones[middle];
        if (kTimeZones[middle].id < id) {
            first = middle + 1;
        } else {
            end = middle;
        }
    }
    return nullptr;
}

const TimeZone* findTimeZoneOnWire(int id) {
    for (const TimeZone& zone : kTimeZones) {
        if (zone.wireId == id) return &zone;
    }
    return nullptr;
}
