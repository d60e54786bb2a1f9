-- The dissector runs inside Wireshark, which gives it these.
std = "lua52"
max_line_length = 120
files["wireshark/qvp/tables.lua"] = { max_line_length = false }
files["wireshark"] = {
    read_globals = {
        "DissectorTable", "NSTime", "Pref", "Proto", "ProtoExpert", "ProtoField", "base", "expert", "frametype",
    },
}
