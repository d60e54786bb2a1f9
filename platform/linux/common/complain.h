// One line on standard error for whoever runs the camera.
#pragma once

// Writes the text behind "qvp platform: " as one line. One for which standard error has no room is dropped, and the
// next says how many were: neither a reader that hangs nor a full disk holds up the camera. Leaves errno as it is.
void complain(const char* format, ...) __attribute__((format(printf, 1, 2)));
