-- Shows what belongs to a datagram: the request to an answer, the answers to a request, the report before a report.
local links = {}

local fields, exchanges

local own = {
    response_in = ProtoField.framenum("qvp.response_in", "Answer in", base.NONE, frametype.RESPONSE),
    response_to = ProtoField.framenum("qvp.response_to", "Answer to", base.NONE, frametype.REQUEST),
    retransmission_of = ProtoField.framenum("qvp.retransmission_of", "Sent before in", base.NONE,
        frametype.RETRANS_PREV),
    repeats = ProtoField.framenum("qvp.repeats", "Sent and answered before in", base.NONE),
    duplicate_of = ProtoField.framenum("qvp.duplicate_of", "Answered before in", base.NONE),
    previous_report = ProtoField.framenum("qvp.previous_report", "Previous report in", base.NONE),
    time = ProtoField.relative_time("qvp.time", "Response time"),
    time_from_first = ProtoField.relative_time("qvp.time_from_first", "Time since the first request"),
    report_interval = ProtoField.relative_time("qvp.report_interval", "Time since the previous report"),
    responses = ProtoField.uint32("qvp.responses", "Answers"),
}

function links.use(modules)
    fields, exchanges = modules.fields, modules.exchanges
    for name, field in pairs(own) do
        fields.add(name, field)
    end
end

local function add(tree, name, value)
    return tree:add(own[name], value):set_generated()
end

local function add_time(tree, name, seconds)
    local whole = math.floor(seconds)
    add(tree, name, NSTime(whole, math.floor((seconds - whole) * 1e9 + 0.5)))
end

local function show_answers(view, tree, found, frame, expects_answer)
    local answers, requests = found.exchange.answers, found.exchange.requests
    if #answers == 0 and frame == requests[#requests].frame and expects_answer then
        view.tell("no_answer", tree)
        view.mark("No answer")
    end
    if #answers > 0 then
        add(tree, "responses", #answers)
    end
    for _, answer in ipairs(answers) do
        local item = add(tree, "response_in", answer.frame)
        item:append_text(string.format(" (%s, %.3f ms)", answer.sender, answer.time * 1000))
    end
end

function links.show_request(view, tree, frame, is_complete, expects_answer)
    local found = exchanges.of(frame)
    if found.retransmission_of and found.retransmission_of ~= frame then
        view.tell("retransmission", add(tree, "retransmission_of", found.retransmission_of))
        view.mark("Retransmission")
    elseif found.repeats then
        view.tell("repetition", add(tree, "repeats", found.repeats))
        view.mark("Again")
    end
    if is_complete then
        show_answers(view, tree, found, frame, expects_answer)
    end
end

function links.show_reply(view, tree, frame)
    local found = exchanges.of(frame)
    if not found.response_to then
        view.tell("not_asked", tree)
        return
    end
    add(tree, "response_to", found.response_to)
    add_time(tree, "time", found.time)
    if found.time_from_first then
        add_time(tree, "time_from_first", found.time_from_first)
    end
    if found.duplicate_of then
        local item = add(tree, "duplicate_of", found.duplicate_of)
        view.tell("duplicate_answer", item, found.same_bytes and "The same answer again" or "Another answer")
        view.mark("Duplicate")
    end
end

function links.show_report(view, tree, frame)
    local found = exchanges.of(frame)
    if not found.previous then
        return
    end
    local item = add(tree, "previous_report", found.previous)
    add_time(tree, "report_interval", found.interval)
    if found.is_restart then
        view.tell("restart", item, "The daemon has started anew, and its counter with it")
        view.mark("Restarted")
    elseif found.is_repeated then
        view.tell("repeated_report", item)
        view.mark("Duplicate")
    elseif found.missed then
        view.tell("missed_reports", item, string.format("%d reports are missing before this one", found.missed))
    end
end

return links
