// Tells the platform that a request begins, if it wants to know.
#pragma once

// From here on the platform shows what other programs have changed by now.
void beginRequest();
