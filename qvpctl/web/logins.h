// The administrators' names and passwords of a session, in memory alone.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "client/login.h"

class Logins {
public:
    // Of one camera, or with "" of all that have none of their own.
    void set(const std::string& mac, client::Login login) { logins_.insert_or_assign(mac, std::move(login)); }
    void forget(const std::string& mac) { logins_.erase(mac); }
    void forgetAll() { logins_.clear(); }

    std::optional<client::Login> of(const std::string& mac) const {
        for (const std::string& name : {mac, std::string()}) {
            const auto known = logins_.find(name);
            if (known != logins_.end()) return known->second;
        }
        return std::nullopt;
    }

private:
    std::map<std::string, client::Login> logins_;
};
