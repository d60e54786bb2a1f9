-- Texts as datagrams carry them.
local text = {}

local ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"
local UTF8 = {
    "[\xC2-\xDF][\x80-\xBF]",
    "[\xE0-\xEF][\x80-\xBF][\x80-\xBF]",
    "[\xF0-\xF4][\x80-\xBF][\x80-\xBF][\x80-\xBF]",
}

local function escaped(byte)
    return string.format("\\x%02x", byte:byte())
end

local function is_utf8(bytes)
    for _, pattern in ipairs(UTF8) do
        bytes = bytes:gsub(pattern, "")
    end
    return not bytes:find("[\x80-\xFF]")
end

-- What can be shown of bytes that may be anything.
function text.printable(bytes)
    bytes = bytes:gsub("%c", escaped)
    return is_utf8(bytes) and bytes or (bytes:gsub("[\x80-\xFF]", escaped))
end

function text.until_nul(bytes)
    return bytes:sub(1, (bytes:find("\0", 1, true) or #bytes + 1) - 1)
end

-- Nil for what is not Base64.
function text.from_base64(encoded)
    local digits, padding = encoded:match("^([%w+/]*)(=*)$")
    if not digits or #padding > 2 or (#digits + #padding) % 4 ~= 0 then
        return nil
    end
    local bytes, bits, value = {}, 0, 0
    for digit in digits:gmatch(".") do
        value = value * 64 + ALPHABET:find(digit, 1, true) - 1
        bits = bits + 6
        if bits >= 8 then
            bits = bits - 8
            local unit = 2 ^ bits
            bytes[#bytes + 1] = string.char(math.floor(value / unit))
            value = value % unit
        end
    end
    return table.concat(bytes)
end

-- "20260131235900" as people write it; nil for anything else, zeros among it.
function text.time(digits)
    local year, month, day, hour, minute, second = digits:match("^(%d%d%d%d)(%d%d)(%d%d)(%d%d)(%d%d)(%d%d)$")
    return year and digits:find("[^0]") and string.format("%s-%s-%s %s:%s:%s", year, month, day, hour, minute, second)
end

return text
