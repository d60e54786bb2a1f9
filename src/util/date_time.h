// Applying the stored clock settings to the system, after the reply to the command that set them.
#pragma once

// Installs time zone and daylight saving, tells the camera service, and follows the NTP server or sets the clock to the
// local time `text` ("YYYY/MM/DD hh:mm:ss", read by position; empty: leave the clock alone). Settings that cannot be
// read end it early, with nothing below them done. Waits 8 seconds for a restarted NTP client.
void reset_datetime(const char* text);

// Sets the clock to the local time `text`. Returns 0, or -1 when mktime gives -1 for it or the clock cannot be set. No
// text is refused for its form: what is no number counts as 0, and mktime carries what is too much.
int set_current_date_time(const char* text);
