// Which wireless channels the radio's region allows.
#pragma once

// Returns 0 when the region's section of /etc/wifi_channel.ini names the channel (never 0), else -1.
int checkWifiChannel(int channel);
