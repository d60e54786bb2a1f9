-- What kind of datagram it is, and what it ought to look like.
local datagram = { REQUEST = 0xFDFD, REPLY = 0xEEFE, REPORT = 0xFFFF }

local EVERYONE, NOBODY = string.rep("\255", 6), string.rep("\0", 6)

local tables, constants, header_size

function datagram.use(modules)
    tables, constants = modules.tables, modules.tables.constants
    header_size = tables.layouts.PacketHeader.size
end

-- The kind of a datagram on the protocol's own port; nil for anything else. FF FF begins many a datagram.
function datagram.kind(tvb)
    local kind = tvb:len() >= 2 and tvb(0, 2):uint()
    if kind == datagram.REQUEST or kind == datagram.REPLY then
        return kind
    end
    local is_report = kind == datagram.REPORT and tvb:len() >= 6 and tvb(4, 2):le_uint() == constants.kPresenceReport
    return is_report and kind or nil
end

function datagram.is_to_everyone(header)
    return header.mac == EVERYONE
end

local function may_be_for_everyone(header)
    return header.opcode == constants.kDiscovery
        or header.opcode == constants.kQuerySupport and header.family == constants.kPrimaryProtocol
end

-- Why a request gets no answer from any camera; nil when some camera might answer it.
function datagram.fault(header)
    local to_all = datagram.is_to_everyone(header)
    if header.family ~= constants.kPrimaryProtocol and header.family ~= constants.kLandapProtocol then
        return "Cameras know no such family"
    elseif not tables.commands[header.opcode] then
        return "Cameras know no such command"
    elseif not datagram.is_served(header) then
        return "Cameras do not know this command in the landap family"
    elseif not may_be_for_everyone(header) then
        return to_all and "Cameras answer this only when it carries their own MAC" or nil
    elseif header.status ~= constants.kByMac and header.status ~= constants.kByMacOrBroadcast then
        return "Cameras know no such way of addressing"
    elseif to_all and (header.status == constants.kByMac or header.address ~= 0) then
        return "A request to every camera has selector 0 and address 0.0.0.0"
    end
    return nil
end

function datagram.header(tvb)
    return {
        sequence = tvb(2, 2):le_uint(),
        opcode = tvb(4, 2):le_uint(),
        mac = tvb(6, 6):raw(),
        address = tvb(12, 4):uint(),
        status = tvb(16, 2):le_uint(),
        family = tvb(18, 2):le_uint(),
        payload_length = tvb(20, 2):le_uint(),
        identity = tvb(2, 4):raw() .. tvb(18, 2):raw(),
        bytes = tvb:raw(),
    }
end

function datagram.is_served(header)
    local command = tables.commands[header.opcode]
    if not command then
        return false
    end
    return header.family == constants.kPrimaryProtocol
        or header.family == constants.kLandapProtocol and command.landap_reply ~= nil
end

-- The one opcode whose request has credentials or not, as the header says.
local function request_layout(command, header)
    local is_query = header.opcode == constants.kQuerySupport and header.family == constants.kLandapProtocol
    return command.request or is_query and header.payload_length ~= 0 and "ProtectedRequest" or "PacketHeader"
end

-- Nil when no camera would send it, or read it.
function datagram.layout(kind, header)
    if kind == datagram.REPORT then
        return "PresenceReport"
    elseif not datagram.is_served(header) then
        return nil
    end
    local command = tables.commands[header.opcode]
    if kind == datagram.REQUEST then
        return request_layout(command, header)
    end
    return header.family == constants.kLandapProtocol and command.landap_reply or command.reply
end

-- The fewest and the most bytes of a layout: a text up to the longest datagram's end may be as short as its NUL.
function datagram.sizes(layout)
    local rows = tables.layouts[layout]
    if rows.size == constants.kDatagramSize then
        return rows[#rows][1] + 1, rows.size
    end
    return rows.size, rows.size
end

local function is_sound_request(header, length)
    return header.mac ~= NOBODY
        and (header.status == constants.kByMac or header.status == constants.kByMacOrBroadcast)
        and not datagram.fault(header)
        and (header.payload_length == 0 or header.payload_length == length - header_size)
end

local function is_sound_answer(header, length)
    local status = header.status
    return header.mac ~= EVERYONE
        and header.mac ~= NOBODY
        and (status == constants.kDone or status == constants.kRefused or status == constants.kNotLogin)
        and header.payload_length == length - header_size
end

-- Whether a datagram on any other port is one of this protocol, with every field of the header as it has to be.
function datagram.is_surely_ours(tvb)
    local kind, length = datagram.kind(tvb), tvb:reported_len()
    if not kind or tvb:len() < header_size then
        return false
    end
    local header = datagram.header(tvb)
    local layout = datagram.layout(kind, header)
    if not layout then
        return false
    end
    local least, most = datagram.sizes(layout)
    if length < least or length > most then
        return false
    elseif kind == datagram.REQUEST then
        return is_sound_request(header, length)
    end
    return is_sound_answer(header, length)
        and (kind == datagram.REPLY or header.status == 0 and header.family == constants.kPrimaryProtocol)
end

return datagram
