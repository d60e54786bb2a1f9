"""What a camera does once its reply has left, in a fixed order whatever it was asked for."""
import clock
import survey

QUIETLY = " 2>/dev/null 1>/dev/null"
TIME_HAS_CHANGED = f"run /usr/sbin/msger camsvr 0 ctimeupdate 0 1{QUIETLY}"
STOP_NTP = f"run /etc/init.d/ntpc.sh stop{QUIETLY}"
BY_NTP = [STOP_NTP, f"run /usr/sbin/msger sinfo 0 sntpstate 0 0{QUIETLY}", f"run /etc/init.d/ntpc.sh start{QUIETLY}",
          "wait 8"]  # fmt: skip
REBOOT = f"run /var/reboot -d 5{QUIETLY}&"
RESTARTS = {
    "name": [f"run /etc/init.d/llmnr-0 restart{QUIETLY}", f"run /etc/init.d/bonjour-0 restart{QUIETLY}"],
    "password": [f"run /etc/init.d/{action}{QUIETLY}" for action in (
        "rtmpd-0 stop", "rtspd-0 stop", "httpd-0 reload", "https-0 reload", "rtspd-0 start", "rtmpd-0 start")],
    "wireless": [f"run /usr/sbin/msger httpdmgr 0 reset_wifi 0 0{QUIETLY}&"],
    "web server": [f"run /usr/sbin/msger httpdmgr 0 hrestart 0 0{QUIETLY}"],
    "network": [f"run /etc/init.d/ipv4 restart{QUIETLY}"],
}  # fmt: skip
RESETS = {
    "factory reset": ["run /etc/init.d/userconfig reset 1>/dev/null 2>/dev/null", REBOOT],
    "reboot": [REBOOT],
}


def run(camera):
    if "survey" in camera.asked_for:
        camera.sites = survey.filled(camera.board.site_list)
    run_commands(camera, RESTARTS)
    if "time" in camera.asked_for:
        apply_time(camera)
    run_commands(camera, RESETS)


def run_commands(camera, commands):
    for what, texts in commands.items():
        if what in camera.asked_for:
            camera.events += texts


def apply_time(camera):
    settings, mode, rule = camera.settings, clock.STANDARD, None
    if settings.flag("DATETIME", "DayLightSaving"):
        mode = clock.ZONES_OWN if settings.flag("DATETIME", "DstAuto") else clock.USERS_OWN
    if mode == clock.USERS_OWN:
        rule = clock.rule_of(settings)
        if rule is None:
            return
    camera.zone = camera.zones.text(settings.number("DATETIME", "TimeZone"), mode, rule)
    camera.events.append(TIME_HAS_CHANGED)
    if settings.number("DATETIME", "Protocol") == 1:
        camera.events += BY_NTP
    elif camera.time_to_set:
        camera.events.append(STOP_NTP)
        set_clock(camera, clock.instants(camera.time_to_set, camera.zone))
        camera.events.append(TIME_HAS_CHANGED)


def set_clock(camera, instants):
    seconds = camera.clock_seen if camera.clock_seen in instants else min(instants)
    if seconds < 0:
        return  # a time that the kernel does not take
    camera.time = seconds
    camera.events += [f"clock {seconds}", f"run /usr/sbin/rtcfg -w{QUIETLY}", TIME_HAS_CHANGED]
