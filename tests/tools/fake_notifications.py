#!/usr/bin/env python3
"""A desktop's notification service for check_watch.py, on the bus of DBUS_SESSION_BUS_ADDRESS. It prints "ready", and for
each notification a line of JSON; a line "NUMBER ACTION" on standard input is a click on one."""

import json
import sys

from gi.repository import Gio, GLib

INTERFACE = """<node><interface name="org.freedesktop.Notifications">
<method name="Notify"><arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
<arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/>
<arg type="i" direction="in"/><arg type="u" direction="out"/></method>
<signal name="ActionInvoked"><arg type="u"/><arg type="s"/></signal></interface></node>"""


class Service:
    def __init__(self):
        self.shown = 0
        self.loop = GLib.MainLoop()
        Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.Notifications", Gio.BusNameOwnerFlags.NONE, self.on_bus,
                         lambda *_: print("ready", flush=True), None)
        GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, self.on_click)

    def on_bus(self, connection, _):
        self.connection = connection
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        connection.register_object("/org/freedesktop/Notifications", interface, self.on_call, None, None)

    def on_call(self, _connection, _sender, _path, _interface, _method, parameters, invocation):
        program, _, icon, title, body, actions, _, _ = parameters.unpack()
        self.shown += 1
        print(json.dumps({"number": self.shown, "program": program, "icon": icon, "title": title, "body": body,
                          "actions": actions}), flush=True)
        invocation.return_value(GLib.Variant("(u)", (self.shown,)))

    def on_click(self, *_):
        line = sys.stdin.readline()
        if line == "":
            self.loop.quit()
            return False
        number, action = line.split()
        self.connection.emit_signal(None, "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "ActionInvoked",
                                    GLib.Variant("(us)", (int(number), action)))
        return True


if __name__ == "__main__":
    Service().loop.run()
