-- The parts of the dissector that need no Wireshark, under the Lua that runs this: later ones than Debian's Wireshark
-- has tell whole numbers from others. Usage: lua5.4 modules_test.lua FOLDER-OF-THE-DISSECTOR
local folder = arg[1] .. "/"
local function part(name)
    return dofile(folder .. name .. ".lua")
end

local function expect(found, wanted)
    if found ~= wanted then
        error(string.format("%s instead of %s", tostring(found), tostring(wanted)), 2)
    end
end

for _, name in ipairs({ "qvp", "fields", "links", "experts", "datagram", "meanings" }) do
    assert(loadfile(folder .. name .. ".lua"))
end

local text = part("text")
expect(text.from_base64("YWRtaW4="), "admin")
expect(text.from_base64("/+8AfA=="), "\255\239\0|")
expect(text.from_base64(""), "")
expect(text.from_base64("YWRtaW4"), nil)
expect(text.from_base64("YWRt=W4="), nil)
expect(text.until_nul("ab\0c"), "ab")
expect(text.until_nul("abc"), "abc")
expect(text.printable("Caf\195\169\0\127\27"), "Caf\195\169\\x00\\x7f\\x1b")
expect(text.printable("\195("), "\\xc3(")
expect(text.time("20260131235900"), "2026-01-31 23:59:00")
expect(text.time("00000000000000"), nil)
expect(text.time("2026013123590"), nil)

local exchanges = part("exchanges")
local function packet(fields)
    return { identity = "\1\2", mac = "camera", bytes = fields.bytes, sender = "here", sequence = fields.sequence }
end
exchanges.take_request(1, 0.0, "tool", packet({ bytes = "ask" }))
exchanges.take_request(2, 1.0, "tool", packet({ bytes = "ask" }))
exchanges.take_reply(3, 1.25, "tool", packet({ bytes = "answer" }))
exchanges.take_reply(4, 1.5, "another", packet({ bytes = "answer" }))
expect(exchanges.of(2).retransmission_of, 1)
expect(exchanges.of(3).response_to, 2)
expect(exchanges.of(3).time, 0.25)
expect(exchanges.of(3).time_from_first, 1.25)
expect(exchanges.of(4).response_to, nil)

-- What a camera answers belongs to the later of two requests, to it and to every camera.
local function request_to(mac)
    return { identity = "\3", mac = mac, bytes = mac }
end
local everyone = string.rep("\255", 6)
exchanges.take_request(11, 1, "tool", request_to(everyone))
exchanges.take_request(12, 2, "tool", request_to("camera"))
exchanges.take_reply(13, 3, "tool", request_to("camera"))
exchanges.take_request(14, 4, "tool", request_to(everyone))
exchanges.take_reply(15, 5, "tool", request_to("camera"))
expect(exchanges.of(13).response_to, 12)
expect(exchanges.of(15).response_to, 14)

exchanges.take_report(5, 2.0, packet({ sequence = 65535 }))
exchanges.take_report(6, 92.0, packet({ sequence = 2 }))
expect(string.format("%d", exchanges.of(6).missed), "2")
exchanges.forget()
expect(exchanges.of(3), nil)

local tables = part("tables")
local function word(name, number)
    return name == "opcode" and tables.commands[number].title or name == "result" and tables.refusals[number] or nil
end
local summary = part("summary")
summary.use({ tables = tables, fields = { word = word }, text = text })
local function reply(seen)
    return summary.reply({ seen = seen })
end
expect(reply({ opcode = 0xA9, status = 0, result = 0, wait_kind = 2, milliseconds = 5000 }),
    "Set wireless settings reply: done, away for 5 s")
expect(reply({ opcode = 0xA2, status = 2, result = 3 }), "Set basic information reply: refused, port 0 or 8088")
expect(reply({ opcode = 0xA5, status = 0, commands = 9 }), "Supported-function query reply: 9 commands")
expect(summary.request({ seen = { opcode = 0xA2, dhcp = 1, name = "Gate", address = "0.0.0.0" } }, "it"),
    'Set basic information request to it: "Gate" by DHCP')
