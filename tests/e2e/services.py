#!/usr/bin/env python3
"""Stands in for services of a desktop, on the session bus.

usage: services.py LOG SCHEME

What they are asked goes to LOG, a line each: the file manager writes "show URL", the session manager
"awake" and "asleep", the notifications "notify TEXT". The settings portal says that dark (SCHEME 1)
or light (2) windows are preferred.
"""

import sys

from gi.repository import Gio, GLib

FILE_MANAGER = """
<node><interface name='org.freedesktop.FileManager1'>
  <method name='ShowItems'><arg type='as' direction='in'/><arg type='s' direction='in'/></method>
</interface></node>"""

SESSION_MANAGER = """
<node><interface name='org.gnome.SessionManager'>
  <method name='Inhibit'>
    <arg type='s' direction='in'/><arg type='u' direction='in'/><arg type='s' direction='in'/>
    <arg type='u' direction='in'/><arg type='u' direction='out'/>
  </method>
  <method name='Uninhibit'><arg type='u' direction='in'/></method>
</interface></node>"""

NOTIFICATIONS = """
<node><interface name='org.freedesktop.Notifications'>
  <method name='Notify'>
    <arg type='s' direction='in'/><arg type='u' direction='in'/><arg type='s' direction='in'/>
    <arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='as' direction='in'/>
    <arg type='a{sv}' direction='in'/><arg type='i' direction='in'/>
    <arg type='u' direction='out'/>
  </method>
</interface></node>"""

SETTINGS = """
<node><interface name='org.freedesktop.portal.Settings'>
  <method name='Read'>
    <arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='v' direction='out'/>
  </method>
  <signal name='SettingChanged'><arg type='s'/><arg type='s'/><arg type='v'/></signal>
</interface></node>"""


def serve(connection, name, path, xml, **methods):
    """A service of one object, whose methods' names are written as they are called."""
    interface = Gio.DBusNodeInfo.new_for_xml(xml).interfaces[0]
    connection.register_object(
        path, interface,
        lambda *call: call[6].return_value(methods[call[4]](*call[5].unpack())), None, None)
    Gio.bus_own_name_on_connection(connection, name, Gio.BusNameOwnerFlags.NONE, None, None)


def main():
    log, scheme = sys.argv[1], int(sys.argv[2])
    connection = Gio.bus_get_sync(Gio.BusType.SESSION)

    def write(*lines):
        with open(log, "a", encoding="utf-8") as file:
            file.writelines(line + "\n" for line in lines)

    def show(urls, _):
        write(*("show " + url for url in urls))

    def notify(_name, _id, _icon, summary, body, *_):
        write(f"notify {summary}: {body}")
        return GLib.Variant("(u)", (1,))

    def inhibit(*_):
        write("awake")
        return GLib.Variant("(u)", (1,))

    def read(_namespace, _key):
        return GLib.Variant("(v)", (GLib.Variant("v", GLib.Variant("u", scheme)),))

    serve(connection, "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
          FILE_MANAGER, ShowItems=show)
    serve(connection, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
          SETTINGS, Read=read)
    serve(connection, "org.gnome.SessionManager", "/org/gnome/SessionManager", SESSION_MANAGER,
          Inhibit=inhibit, Uninhibit=lambda _: write("asleep"))
    serve(connection, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
          NOTIFICATIONS, Notify=notify)
    GLib.timeout_add(200, lambda: print("ready", flush=True))
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
