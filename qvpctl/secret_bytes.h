// Where secrets stand in datagrams, so that these can be shown.
#pragma once

#include <cstdint>
#include <vector>

// Puts zeros in the place of the login of a protected request.
void blankLogin(std::vector<uint8_t>& request);

// Puts zeros in the place of the keys and passwords that a reply tells, as far as it reaches.
void blankSecrets(std::vector<uint8_t>& reply);
