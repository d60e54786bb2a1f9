-- Wireshark's view of the configuration protocol on UDP port 62976, of both its families. See ../README.md.
local here = debug.getinfo(1, "S").source:match("^@?(.*[/\\])") or ""
local modules = {}

-- Wireshark starts every file of a plugin folder by itself; the others are parts of this one, and do nothing then.
local NAMES = { "tables", "meanings", "text", "experts", "exchanges", "fields", "datagram", "summary", "links" }
for _, name in ipairs(NAMES) do
    modules[name] = dofile(here .. name .. ".lua")
    if modules[name].use then
        modules[name].use(modules)
    end
end

local fields, datagram, exchanges = modules.fields, modules.datagram, modules.exchanges
local constants = modules.tables.constants
local HEADER = modules.tables.layouts.PacketHeader.size

local qvp = Proto("qvp", "IP Camera Configuration")
qvp.fields = fields.all
qvp.experts = modules.experts.all
qvp.prefs.show_passwords = Pref.bool("Show passwords and keys", false,
    "Show what the fields of passwords and wireless keys hold, instead of the word 'hidden'")

local function mac_text(mac)
    return (mac:gsub(".", function(byte) return string.format(":%02x", byte:byte()) end):sub(2))
end

-- What an ICMP error quotes is nobody's fault, and no part of an exchange.
local function view_of(tvb, pinfo, kind)
    local marks = {}
    local function tell(name, item, message)
        if not pinfo.in_error_pkt then
            item:add_proto_expert_info(modules.experts[name], message or modules.experts.meanings[name])
        end
    end
    local view = fields.view(tvb, kind == datagram.REQUEST, tell)
    view.marks, view.is_quoted = marks, pinfo.in_error_pkt
    view.is_cut = view.is_quoted or tvb:len() < tvb:reported_len()
    function view.mark(text)
        marks[#marks + 1] = "[" .. text .. "] "
    end
    return view
end

local function finish(view, pinfo, root, line)
    line = table.concat(view.marks) .. line
    root:append_text(", " .. line)
    if not view.is_quoted then
        pinfo.cols.info:set(line)
    end
end

local function show_less_than_header(view, pinfo, root)
    fields.show_header(view, root)
    if not view.is_cut then
        view.tell("short", root, string.format("%d bytes, and the header alone has %d", view.length, HEADER))
        view.mark("Malformed")
    end
    finish(view, pinfo, root, view.is_cut and "Cut off within the header" or "Shorter than the header")
end

local function check_lengths(view, root, header, layout, length)
    if view.is_cut then
        return
    end
    if header.payload_length ~= length - HEADER then
        view.tell(view.is_request and "request_length" or "declared_length", view.items.payload_length,
            string.format("%d bytes are declared, there are %d", header.payload_length, length - HEADER))
    end
    local least, most = datagram.sizes(layout)
    if length < least then
        view.tell("short", root, view.is_request
            and string.format("%d of at least %d bytes; cameras read zeros for the others", length, least)
            or string.format("%d of %d bytes", length, least))
        view.mark("Malformed")
    elseif length > constants.kDatagramSize then
        view.tell("too_long", root, string.format("%d bytes, and cameras take %d", length, constants.kDatagramSize))
    elseif length > most then
        view.tell("trailing", root, string.format("%d bytes behind the last field", length - most))
    end
end

local function tell_outcome(view, header)
    local item = view.items.status
    if header.status == constants.kRefused then
        local reason = modules.summary.reason(view.seen)
        view.tell("refused", item, "Refused" .. (reason and ": " .. reason or ""))
    elseif header.status == constants.kNotLogin then
        view.tell("wrong_login", item)
    elseif header.status ~= constants.kDone then
        view.tell("unknown_status", item)
    end
end

-- Behind a refused login stand zeros, which mean nothing.
local function has_payload(header)
    return header.status ~= constants.kNotLogin or header.bytes:find("[^\0]", HEADER + 1) ~= nil
end

local function show_body(view, root, header, layout, length)
    if not layout then
        local text = string.format("%d bytes of no known meaning", length - HEADER)
        root:add(view.tvb(HEADER, 0), text) -- on no bytes: there may be passwords in them
        return
    end
    check_lengths(view, root, header, layout, length)
    if view.is_request or has_payload(header) then
        fields.show(view, root, layout, 0)
    end
end

local function endpoint(address, port)
    return tostring(address) .. ":" .. port
end

-- Takes the frame in when it is seen for the first time; false when it cannot be one of an exchange.
local function take_in(view, pinfo, kind, header)
    if view.is_quoted or pinfo.visited then
        return not view.is_quoted and exchanges.of(pinfo.number) ~= nil
    end
    header.sender = tostring(pinfo.src)
    if kind == datagram.REQUEST then
        exchanges.take_request(pinfo.number, pinfo.rel_ts, endpoint(pinfo.src, pinfo.src_port), header)
    elseif kind == datagram.REPLY then
        exchanges.take_reply(pinfo.number, pinfo.rel_ts, endpoint(pinfo.dst, pinfo.dst_port), header)
    else
        exchanges.take_report(pinfo.number, pinfo.rel_ts, header)
    end
    return true
end

local function finish_request(view, pinfo, root, header, is_linked)
    local fault = datagram.fault(header)
    if fault then
        view.tell("not_served", root, fault)
    end
    if is_linked then
        modules.links.show_request(view, root, pinfo.number, pinfo.visited, not fault)
    end
    local recipient = datagram.is_to_everyone(header) and "every camera" or mac_text(header.mac)
    finish(view, pinfo, root, modules.summary.request(view, recipient))
end

local function finish_reply(view, pinfo, root, header, is_linked)
    tell_outcome(view, header)
    if is_linked then
        modules.links.show_reply(view, root, pinfo.number)
    end
    finish(view, pinfo, root, modules.summary.reply(view))
end

local function finish_report(view, pinfo, root, _, is_linked)
    if is_linked then
        modules.links.show_report(view, root, pinfo.number)
    end
    finish(view, pinfo, root, modules.summary.report(view))
end

local FINISH = {
    [datagram.REQUEST] = finish_request,
    [datagram.REPLY] = finish_reply,
    [datagram.REPORT] = finish_report,
}

-- Taken for nothing of ours when 0 is returned.
function qvp.dissector(tvb, pinfo, tree)
    local kind = datagram.kind(tvb)
    if not kind then
        return 0
    end
    local view = view_of(tvb, pinfo, kind)
    local root = tree:add(qvp, tvb())
    if not view.is_quoted then
        pinfo.cols.protocol:set("QVP")
    end
    if view.length < HEADER then
        show_less_than_header(view, pinfo, root)
        return view.length
    end
    local header = datagram.header(tvb)
    if header.family == constants.kLandapProtocol and not view.is_quoted then
        pinfo.cols.protocol:set("LANDAP")
    end
    fields.show_header(view, root:add(tvb(0, HEADER), "Header"))
    show_body(view, root, header, datagram.layout(kind, header), tvb:reported_len())
    FINISH[kind](view, pinfo, root, header, take_in(view, pinfo, kind, header))
    return view.length
end

local function dissect_elsewhere(tvb, pinfo, tree)
    return datagram.is_surely_ours(tvb) and qvp.dissector(tvb, pinfo, tree) > 0
end

function qvp.init()
    exchanges.forget()
end

function qvp.prefs_changed()
    fields.show_secrets = qvp.prefs.show_passwords
end

DissectorTable.get("udp.port"):add(constants.kPort, qvp)
qvp:register_heuristic("udp", dissect_elsewhere)
