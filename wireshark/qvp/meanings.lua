-- What the fields are called and what their values mean, where the layouts' own names and numbers do not tell.
local meanings = {}

meanings.labels = {
    active_wep_key = "Active WEP key",
    apply_ddns = "DDNS is to change",
    apply_upnp = "UPnP is to change",
    auth_key_length = "Authentication and WEP key length",
    authentication_channel = "Authentication and channel",
    channel_low_bits = "Channel, its low four bits",
    dhcp = "Addressing",
    dns = "First name server",
    dns2 = "Second name server",
    ddns_host = "DDNS host name",
    ddns_password = "DDNS password",
    ddns_user = "DDNS user name",
    http_port = "Web server's port",
    key_format_active = "WEP key format and active key",
    mac = "Device",
    mask = "Network mask",
    milliseconds = "Milliseconds away",
    mode_encryption = "Mode and encryption",
    name = "Camera name",
    ntp = "Clock",
    ntp_server = "NTP server",
    opcode = "Command",
    opcodes = "Supported command",
    pppoe = "PPPoE",
    pppoe_password = "PPPoE password",
    pppoe_user = "PPPoE user name",
    pre_shared_key = "Pre-shared key",
    protocol = "Family",
    selector = "Addressed by",
    ssid = "SSID",
    timezone = "Time zone",
    type_cipher = "Kind and encryption",
    upnp = "UPnP",
    wait_kind = "Away",
    wep_key = "WEP key",
    wep_key_format = "WEP key format",
    wep_key_length = "WEP key length",
}

local KEYS = { wep_key = true, pre_shared_key = true, key = true }

-- What is shown only when the preference says so.
function meanings.is_secret(name)
    return KEYS[name] or name:find("password", 1, true) ~= nil
end

local on_off = { [0] = "off", [1] = "on" }
local no_yes = { [0] = "no", [1] = "yes" }

meanings.values = {
    magic = { [0xFDFD] = "request", [0xEEFE] = "reply", [0xFFFF] = "presence report" },
    protocol = { [1] = "landap", [2] = "primary" },
    selector = { [0] = "MAC, or everyone", [0x7777] = "MAC" },
    status = { [0] = "done", [2] = "refused", [3] = "wrong user name or password" },
    dhcp = { [0] = "static", [1] = "DHCP" },
    daylight_saving = on_off,
    ntp = { [0] = "set by hand", [1] = "follows the NTP server" },
    enable = on_off,
    user_class = { [0] = "wrong user name or password", [1] = "administrator", [2] = "in another group" },
    wait_kind = { [0] = "no", [2] = "for a while" },
    mode = { [0] = "infrastructure", [1] = "ad hoc" },
    encryption = { [0] = "none", [1] = "WEP", [2] = "TKIP", [3] = "AES", [4] = "TKIP and AES", [15] = "not known" },
    authentication = {
        [0] = "open",
        [1] = "shared key",
        [3] = "WPA, pre-shared key",
        [4] = "WPA2, pre-shared key",
        [5] = "WPA and WPA2, pre-shared key",
        [15] = "not known",
    },
    wep_key_length = { [0] = "64 bits", [1] = "128 bits" },
    wep_key_format = { [0] = "printable", [1] = "hexadecimal" },
    upnp = on_off,
    pppoe = on_off,
    apply_upnp = no_yes,
    apply_ddns = no_yes,
}

-- Bytes that hold several values: the name of each, what divides the byte, and how many values are left of it.
meanings.parts = {
    mode_encryption = { { "mode", 1, 16 }, { "encryption", 16, 16 } },
    auth_key_length = { { "authentication", 1, 16 }, { "wep_key_length", 16, 16 } },
    key_format_active = { { "wep_key_format", 1, 16 }, { "active_wep_key", 16, 16 } },
    type_cipher = { { "mode", 1, 2 }, { "encryption", 16, 16 } },
    authentication_channel = { { "authentication", 1, 16 }, { "channel_low_bits", 16, 16 } },
    service_values = { { "upnp", 1, 2 }, { "pppoe", 2, 2 } },
    service_mask = { requests_only = true, { "apply_upnp", 1, 2 }, { "apply_ddns", 2, 2 } },
}

function meanings.label(name)
    local text = meanings.labels[name] or name:gsub("_%d+$", ""):gsub("_", " ")
    return text:sub(1, 1):upper() .. text:sub(2)
end

return meanings
