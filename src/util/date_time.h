// Applying the stored clock settings to the system, after the reply to the command that set them.
#pragma once

// Installs time zone and daylight saving, tells the camera service, and follows the NTP server or sets the clock to the
// local time `text` ("YYYY/MM/DD hh:mm:ss", read by position; empty: leave the clock alone). Settings that cannot be
// read end it early, with nothing below them done. Waits 8 seconds for a restarted NTP client.
void reset_datetime(const char* text);

// Sets the clock. Returns 0, or -1 when the text is no time or the clock cannot be set.
int set_current_date_time(const char* text);
