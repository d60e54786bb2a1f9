// Where secrets come from: never from the command line itself.
#pragma once

#include <string>

#include "client/login.h"
#include "qvpctl/options.h"

// "@FILE" is the first line of a file, "env:NAME" an environment variable, "-" a prompt that asks twice. Throws Error
// BadValue for anything else, naming `key`, and Error Local for what cannot be read.
client::Secret readSecret(const std::string& key, const std::string& source);

// True for one of these forms.
bool isSecretSource(const std::string& source);

// The login of the options, the environment, or a prompt. Throws Error BadValue when there is nobody to ask.
client::Login readLogin(const CommonOptions& options);
