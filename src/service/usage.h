// What the program tells about itself.
#pragma once

// Answers --help and --version on standard output; false for any other argument.
bool tellAbout(const char* argument);
