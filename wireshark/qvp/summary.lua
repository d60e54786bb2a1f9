-- A datagram in one line, for the column "Info".
local summary = {}

local constants, fields, text

function summary.use(modules)
    constants, fields, text = modules.tables.constants, modules.fields, modules.text
end

local function named(seen)
    return seen.name and string.format('"%s" at %s', seen.name, seen.address or "?") or seen.address or "?"
end

local function network(seen)
    local protection = fields.word("encryption", seen.encryption) or "unknown"
    return string.format('SSID "%s", encryption %s', seen.ssid or "", protection)
end

local function clock(seen)
    local zone = fields.word("timezone", seen.timezone) or seen.timezone
    local time = seen.local_time or ""
    local shown = text.time(time) or time:match("^0+$") and "clock as it is" or time
    return string.format("%s, zone %s", shown, zone or "?")
end

local REQUESTS = {
    kSetBasicInfo = function(seen)
        return seen.dhcp == 1 and string.format('"%s" by DHCP', seen.name or "") or named(seen)
    end,
    kSetDatetime = clock,
    kSetWifi = network,
    kSetSimpleWifi = network,
}

local REPLIES = {
    kDiscovery = named,
    kUserVerification = function(seen)
        return fields.word("user_class", seen.user_class)
    end,
    kGetDatetime = clock,
    kGetWifi = network,
    kGetSimpleWifi = network,
    kSiteSurvey = function(seen)
        return string.format("%d network%s", seen.networks or 0, seen.networks == 1 and "" or "s")
    end,
    kQuerySupport = function(seen)
        return string.format("%d commands", seen.commands or 0)
    end,
}

local function particulars(writers, view)
    for name, writer in pairs(writers) do
        if constants[name] == view.seen.opcode then
            return writer(view.seen)
        end
    end
    return nil
end

local function title(view)
    return fields.word("opcode", view.seen.opcode) or string.format("Unknown command 0x%04x", view.seen.opcode)
end

function summary.request(view, recipient)
    local more = particulars(REQUESTS, view)
    return title(view) .. " request to " .. recipient .. (more and ": " .. more or "")
end

-- Why a setting was refused; nil when the camera does not tell.
function summary.reason(seen)
    local code = seen.result or 0
    return code ~= 0 and (fields.word("result", code) or "result " .. code) or nil
end

local function outcome(view)
    local seen = view.seen
    if seen.status == constants.kRefused then
        local reason = summary.reason(seen)
        return "refused" .. (reason and ", " .. reason or "")
    elseif seen.status == constants.kNotLogin then
        return "refused, wrong user name or password"
    elseif seen.status ~= constants.kDone then
        return "status " .. seen.status
    elseif seen.result then
        local away = seen.wait_kind == 2 and string.format(", away for %g s", (seen.milliseconds or 0) / 1000)
        return "done" .. (away or "")
    end
    return particulars(REPLIES, view) or "done"
end

function summary.reply(view)
    return title(view) .. " reply: " .. outcome(view)
end

function summary.report(view)
    return string.format("Presence report %d: %s", view.seen.sequence, named(view.seen))
end

return summary
