#!/usr/bin/env python3
"""Stands in for two services of a desktop, on the session bus.

usage: services.py LOG SCHEME

The file manager writes each URL that it is asked to show to LOG, a line each. The settings portal
says that dark (SCHEME 1) or light (2) windows are preferred.
"""

import sys

from gi.repository import Gio, GLib

FILE_MANAGER = """
<node><interface name='org.freedesktop.FileManager1'>
  <method name='ShowItems'><arg type='as' direction='in'/><arg type='s' direction='in'/></method>
</interface></node>"""

SETTINGS = """
<node><interface name='org.freedesktop.portal.Settings'>
  <method name='Read'>
    <arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='v' direction='out'/>
  </method>
  <signal name='SettingChanged'><arg type='s'/><arg type='s'/><arg type='v'/></signal>
</interface></node>"""


def serve(connection, path, xml, answer):
    interface = Gio.DBusNodeInfo.new_for_xml(xml).interfaces[0]
    connection.register_object(
        path, interface,
        lambda *call: call[6].return_value(answer(*call[5].unpack())), None, None)


def main():
    log, scheme = sys.argv[1], int(sys.argv[2])
    connection = Gio.bus_get_sync(Gio.BusType.SESSION)

    def show(urls, _):
        with open(log, "a", encoding="utf-8") as file:
            file.writelines(url + "\n" for url in urls)

    def read(_namespace, _key):
        return GLib.Variant("(v)", (GLib.Variant("v", GLib.Variant("u", scheme)),))

    serve(connection, "/org/freedesktop/FileManager1", FILE_MANAGER, show)
    serve(connection, "/org/freedesktop/portal/desktop", SETTINGS, read)
    for name in ("org.freedesktop.FileManager1", "org.freedesktop.portal.Desktop"):
        Gio.bus_own_name_on_connection(connection, name, Gio.BusNameOwnerFlags.NONE, None, None)
    GLib.timeout_add(200, lambda: print("ready", flush=True))
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
