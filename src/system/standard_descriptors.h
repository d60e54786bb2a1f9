// Descriptors 0 to 2.
#pragma once

// Opens /dev/null in place of each that the daemon was started without: the next file or socket would take its number,
// traces would go into it, and every command would inherit it. Called before anything else is opened.
void openStandardDescriptors();
