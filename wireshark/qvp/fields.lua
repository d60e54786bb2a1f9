-- The fields of every layout: what Wireshark is told of them, and how they are shown.
local fields = { all = {}, by_name = {}, show_secrets = false }

local tables, meanings, text, values

local NUMBERS = {
    byte = ProtoField.uint8,
    Le16 = ProtoField.uint16,
    Be16 = ProtoField.uint16,
    Le32 = ProtoField.uint32,
}
local IN_HEX = { magic = true, opcode = true, opcodes = true, selector = true }
local MAY_BE_CUT = { text = true, base64 = true, bytes = true }

local function words_of_numbers()
    local commands = { [tables.constants.kPresenceReport] = "Presence report" }
    for opcode, command in pairs(tables.commands) do
        commands[opcode] = command.title
    end
    tables.refusals[0] = "accepted"
    tables.zones[0] = "none"
    local words = { opcode = commands, opcodes = commands, result = tables.refusals, timezone = tables.zones }
    return setmetatable(words, { __index = meanings.values })
end

local function make(name, kind, comment)
    local filter, label = "qvp." .. name, meanings.label(name)
    if NUMBERS[kind] then
        return NUMBERS[kind](filter, label, IN_HEX[name] and base.HEX or base.DEC, values[name], nil, comment)
    elseif kind == "Ipv4" then
        return ProtoField.ipv4(filter, label, comment)
    elseif kind == "Mac" then
        return ProtoField.ether(filter, label, comment)
    elseif kind == "bytes" then
        return ProtoField.bytes(filter, label, base.NONE, comment)
    end
    return ProtoField.string(filter, label, base.ASCII, comment)
end

function fields.add(name, field)
    if not fields.by_name[name] then
        fields.by_name[name] = field
        fields.all[#fields.all + 1] = field
    end
end

-- {name: {kind, what each layout says of it}}: a name means the same wherever it stands, its comments may differ.
local function kinds_and_comments()
    local found = {}
    local function note(name, kind, comment)
        local entry = found[name] or { kind = kind, comments = "" }
        if not entry.comments:find(comment, 1, true) then
            entry.comments = entry.comments .. (entry.comments == "" and "" or " / ") .. comment
        end
        found[name] = entry
    end
    for _, struct in ipairs(tables.order) do
        for _, row in ipairs(tables.layouts[struct]) do
            note(row[3], row[4], row[5])
            for _, part in ipairs(meanings.parts[row[3]] or {}) do
                note(part[1], "byte", row[5])
            end
        end
    end
    return found
end

function fields.use(modules)
    tables, meanings, text = modules.tables, modules.meanings, modules.text
    values = words_of_numbers()
    fields.add("magic", make("magic", "Be16", "request, reply or presence report"))
    fields.add("selector", make("selector", "Le16", "how a request says whom it is for"))
    for name, entry in pairs(kinds_and_comments()) do
        if not tables.layouts[entry.kind] then
            fields.add(name, make(name, entry.kind, entry.comments))
        end
    end
end

function fields.word(name, number)
    return values[name] and values[name][number]
end

-- One datagram being shown. What was seen of it is collected under the fields' names, for the line that sums it up;
-- `tell` is told of what is wrong with an item.
function fields.view(tvb, is_request, tell)
    return { tvb = tvb, length = tvb:len(), is_request = is_request, tell = tell, seen = {}, items = {} }
end

local function show_text(view, tree, name, at, width, kind)
    local range = view.tvb(at, width)
    local content = text.until_nul(range:raw())
    local decoded = kind == "text" and content or text.from_base64(content)
    local readable = text.printable(decoded or content)
    local item
    if meanings.is_secret(name) and not fields.show_secrets then
        -- On none of the datagram's bytes: exports write out the bytes of every item.
        item = tree:add(fields.by_name[name], view.tvb(at, 0), "hidden")
    else
        item = tree:add(fields.by_name[name], range, readable)
        view.seen[name] = readable
    end
    if text.time(readable) then
        item:append_text(" (" .. text.time(readable) .. ")")
    end
    if not decoded then
        view.tell("not_base64", item)
    end
    return item
end

local function show_byte(view, tree, name, at)
    local range = view.tvb(at, 1)
    local item, value = tree:add(fields.by_name[name], range), range:uint()
    view.seen[name] = value
    local parts = meanings.parts[name]
    if not parts or parts.requests_only and not view.is_request then
        return
    end
    for _, part in ipairs(parts) do
        local share = math.floor(value / part[2]) % part[3]
        item:add(fields.by_name[part[1]], range, share)
        view.seen[part[1]] = share
    end
end

local function show_number(view, tree, name, at, width, kind)
    local range, field = view.tvb(at, width), fields.by_name[name]
    local little = kind:sub(1, 2) == "Le"
    view.seen[name] = little and range:le_uint() or range:uint()
    view.items[name] = little and tree:add_le(field, range) or tree:add(field, range)
end

local function show_bytes(view, tree, name, at, width)
    tree:add(fields.by_name[name], view.tvb(at, width))
end

local SHOW = {
    byte = show_byte,
    Le16 = show_number,
    Be16 = show_number,
    Le32 = show_number,
    Mac = show_bytes,
    bytes = show_bytes,
    text = show_text,
    base64 = show_text,
    Ipv4 = function(view, tree, name, at)
        view.seen[name] = tostring(view.tvb(at, 4):ipv4())
        view.items[name] = tree:add(fields.by_name[name], view.tvb(at, 4))
    end,
}

local function show_one(view, tree, name, kind, at, width)
    local there = math.min(width, view.length - at)
    if there == width or there > 0 and MAY_BE_CUT[kind] then
        return SHOW[kind](view, tree, name, at, there, kind)
    end
    return nil
end

-- Networks fill the slots from the first one on; behind them is nothing, or what no network looks like.
local function show_networks(view, tree, at, count)
    local size = tables.layouts.SiteEntry.size
    view.seen.networks = 0
    for slot = 0, count - 1 do
        local start = at + slot * size
        if start + size > view.length then
            return
        end
        local ssid = text.until_nul(view.tvb(start, 33):raw())
        local rest = view.tvb(start + 33, 3):uint()
        if ssid ~= "" or rest ~= 0 and rest ~= 0x00F10F then
            view.seen.networks = view.seen.networks + 1
            local entry = tree:add(view.tvb(start, size), "Network: " .. text.printable(ssid))
            fields.show(view, entry, "SiteEntry", start)
        end
    end
end

local function show_commands(view, tree, name, at, count)
    view.seen.commands = 0
    for slot = 0, math.min(count, math.floor((view.length - at) / 2)) - 1 do
        local range = view.tvb(at + 2 * slot, 2)
        if range:le_uint() ~= 0 then
            view.seen.commands = view.seen.commands + 1
            tree:add_le(fields.by_name[name], range)
        end
    end
end

-- The fields behind the header, as far as the datagram has them.
function fields.show(view, tree, layout, start)
    if layout == "PacketHeader" then
        return
    end
    for _, row in ipairs(tables.layouts[layout]) do
        local at, width, name, kind, count = start + row[1], row[2], row[3], row[4], row[6] or 1
        if kind == "SiteEntry" then
            show_networks(view, tree, at, count)
        elseif name == "opcodes" then
            show_commands(view, tree, name, at, count)
        elseif tables.layouts[kind] then
            fields.show(view, tree, kind, at)
        else
            for number = 0, count - 1 do
                local item = show_one(view, tree, name, kind, at + number * width, width)
                if item and count > 1 then
                    item:append_text(" (number " .. number .. ")")
                end
            end
        end
    end
end

-- Status and magic mean different things to requests and replies, or read better as one number.
function fields.show_header(view, tree)
    for _, row in ipairs(tables.layouts.PacketHeader) do
        local at, width, name, kind = row[1], row[2], row[3], row[4]
        if name == "magic" then
            kind = "Be16"
        elseif name == "status" and view.is_request then
            name = "selector"
        end
        show_one(view, tree, name, kind, at, width)
    end
end

return fields
