-- What every Lua from 5.1 on has, and what Wireshark adds.
std = "min"
max_line_length = 120
read_globals = {
    "DissectorTable", "NSTime", "Pref", "Proto", "ProtoExpert", "ProtoField", "base", "expert", "frametype",
}
files["qvp/tables.lua"] = { max_line_length = false }
