-- What there is to say of a datagram beyond its fields; each is a filter, such as qvp.expert.no_answer.
local experts = { all = {}, meanings = {} }

local function add(name, group, severity, meaning)
    experts[name] = ProtoExpert.new("qvp.expert." .. name, meaning, group, severity)
    experts.meanings[name] = meaning
    experts.all[#experts.all + 1] = experts[name]
end

local group, severity = expert.group, expert.severity

add("refused", group.RESPONSE_CODE, severity.WARN, "Refused")
add("wrong_login", group.RESPONSE_CODE, severity.WARN, "Wrong user name or password")
add("unknown_status", group.RESPONSE_CODE, severity.WARN, "A status that cameras do not send")

add("short", group.MALFORMED, severity.ERROR, "Shorter than its fields")
add("declared_length", group.MALFORMED, severity.ERROR, "Another length than the header declares")
add("request_length", group.PROTOCOL, severity.NOTE, "Another length than declared, which cameras do not mind")
add("trailing", group.PROTOCOL, severity.WARN, "Bytes behind the last field")
add("too_long", group.MALFORMED, severity.ERROR, "Longer than any datagram of this protocol")
add("not_base64", group.PROTOCOL, severity.WARN, "Not Base64")
add("not_served", group.PROTOCOL, severity.WARN, "No camera answers this")

add("no_answer", group.SEQUENCE, severity.WARN, "No answer")
add("retransmission", group.SEQUENCE, severity.NOTE, "Retransmission")
add("repetition", group.SEQUENCE, severity.NOTE, "The same request again, after it was answered")
add("duplicate_answer", group.SEQUENCE, severity.NOTE, "The camera has answered already")
add("not_asked", group.SEQUENCE, severity.NOTE, "Answers no request in this capture")
add("restart", group.SEQUENCE, severity.NOTE, "The daemon has started anew")
add("missed_reports", group.SEQUENCE, severity.NOTE, "Reports are missing")
add("repeated_report", group.SEQUENCE, severity.NOTE, "The same report again")

return experts
