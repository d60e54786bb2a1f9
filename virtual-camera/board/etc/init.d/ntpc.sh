#!/bin/bash
# The NTP client: start or stop.
# shellcheck source=/dev/null
. /usr/lib/board/record
exec /usr/lib/board/time-client "$1"
