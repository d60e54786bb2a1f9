-- What belongs together: a request, its retransmissions and its answers; the presence reports of one camera.
--
-- Frames are taken in once, in the order of the capture. What was found of a frame is looked up whenever it is shown;
-- what came behind it is complete only from the second look on.
local exchanges = {}

local BETWEEN_REPORTS = 30 -- seconds
local NOT_TWO_STARTS = 1

local latest, reports, of_frame

function exchanges.forget()
    latest, reports, of_frame = {}, {}, {}
end
exchanges.forget()

function exchanges.of(frame)
    return of_frame[frame]
end

-- Requests are told from each other by who asks, and by sequence, command and family.
local function key(requester, packet, mac)
    return requester .. packet.identity .. mac
end

local EVERYONE = string.rep("\255", 6)

function exchanges.take_request(frame, time, requester, packet)
    local place = key(requester, packet, packet.mac)
    local before = latest[place]
    local same = before and before.bytes == packet.bytes
    local found = { role = "request" }
    if same and #before.answers == 0 then
        found.exchange, found.retransmission_of = before, before.requests[1].frame
    else
        found.exchange = { bytes = packet.bytes, requests = {}, answers = {} }
        found.repeats = same and before.requests[#before.requests].frame or nil
        latest[place] = found.exchange
    end
    local requests = found.exchange.requests
    requests[#requests + 1] = { frame = frame, time = time }
    of_frame[frame] = found
end

-- A request to one camera is answered by that one; one to every camera by each.
local function exchange_answered(requester, packet)
    local to_it, to_all = latest[key(requester, packet, packet.mac)], latest[key(requester, packet, EVERYONE)]
    if to_it and to_all then
        local later = to_it.requests[#to_it.requests].frame > to_all.requests[#to_all.requests].frame
        return later and to_it or to_all
    end
    return to_it or to_all
end

function exchanges.take_reply(frame, time, requester, packet)
    local exchange = exchange_answered(requester, packet)
    local found = { role = "reply", exchange = exchange }
    of_frame[frame] = found
    if not exchange then
        return
    end
    for _, answer in ipairs(exchange.answers) do
        if answer.mac == packet.mac then
            found.duplicate_of = found.duplicate_of or answer.frame
            found.same_bytes = answer.bytes == packet.bytes
        end
    end
    local request = exchange.requests[#exchange.requests]
    found.response_to, found.time = request.frame, time - request.time
    found.time_from_first = #exchange.requests > 1 and time - exchange.requests[1].time or nil
    exchange.answers[#exchange.answers + 1] =
        { frame = frame, mac = packet.mac, bytes = packet.bytes, time = found.time, sender = packet.sender }
end

-- A counter that is lower than before has wrapped if there was time for that many reports, else it began anew.
local function is_restart(before, sequence, interval)
    if sequence == before.sequence then
        return sequence == 0 and interval >= NOT_TWO_STARTS
    end
    local steps = (sequence - before.sequence) % 0x10000
    return sequence < before.sequence and steps > interval / BETWEEN_REPORTS + 1
end

function exchanges.take_report(frame, time, packet)
    local before = reports[packet.mac]
    local found = { role = "report" }
    if before then
        found.previous, found.interval = before.frame, time - before.time
        found.is_restart = is_restart(before, packet.sequence, found.interval)
        found.is_repeated = not found.is_restart and packet.sequence == before.sequence
        local steps = (packet.sequence - before.sequence) % 0x10000
        found.missed = not found.is_restart and steps > 1 and steps - 1 or nil
    end
    reports[packet.mac] = { frame = frame, time = time, sequence = packet.sequence }
    of_frame[frame] = found
end

return exchanges
