// Tells Tessly what GNOME tells no program by itself: which application is in front, and where the
// pointer is; and brings a window to the front that was there before.
//
// Every program of the session that is not in a sandbox can ask. So it tells what an application is
// called and by which names its windows go, never what a window shows or is titled, and activates
// only windows that it has told of.

import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import Shell from 'gi://Shell';
import * as Main from 'resource:///org/gnome/shell/ui/main.js';
import {Extension} from 'resource:///org/gnome/shell/extensions/extension.js';

const busName = 'com.brackmoor.tessly.Shell';
const objectPath = '/com/brackmoor/tessly/Shell';

// A window in front is a dictionary, empty where none is:
//   window (t)              by which Activate and WindowClosed name it
//   hasKeyboard (b)         whether keys go to it, and not to the shell itself
//   pid (i)                 of the program
//   desktopEntry (s)        the id of its application, with ".desktop"; "" if it has no entry
//   name (s)                of its application, in the user's language; "" if it has no entry
//   isTerminal (b)          whether its entry is in the category of terminals
//   applicationId (s), instance (s), class (s)   what the window says of itself
// Rectangles are x, y, width and height, in the coordinates of a desktop of that size.
const interfaceDescription = `
<node>
  <interface name="com.brackmoor.tessly.Shell1">
    <method name="Front">
      <arg name="window" type="a{sv}" direction="out"/>
    </method>
    <signal name="FrontChanged">
      <arg name="window" type="a{sv}"/>
    </signal>
    <signal name="WindowClosed">
      <arg name="window" type="t"/>
    </signal>
    <method name="Activate">
      <arg name="window" type="t" direction="in"/>
    </method>
    <method name="Place">
      <arg name="pointer" type="ai" direction="out"/>
      <arg name="pointerMonitor" type="ai" direction="out"/>
      <arg name="focusMonitor" type="ai" direction="out"/>
      <arg name="desktop" type="ai" direction="out"/>
    </method>
  </interface>
</node>`;

export default class TesslyExtension extends Extension {
    enable() {
        // Windows that are or were in front, by their number.
        this._windows = new Map();
        this._exported = Gio.DBusExportedObject.wrapJSObject(interfaceDescription, this);
        this._exported.export(Gio.DBus.session, objectPath);
        global.display.connectObject('notify::focus-window', () => this._frontChanged(), this);
        global.stage.connectObject('notify::is-grabbed', () => this._frontChanged(), this);
        Shell.WindowTracker.get_default().connectObject(
            'tracked-windows-changed', () => this._frontChanged(), this);
        this._frontChanged();
        // Last: whoever sees the name finds everything else in place.
        this._name = Gio.bus_own_name_on_connection(
            Gio.DBus.session, busName, Gio.BusNameOwnerFlags.NONE, null, null);
    }

    disable() {
        Gio.bus_unown_name(this._name);
        global.display.disconnectObject(this);
        global.stage.disconnectObject(this);
        Shell.WindowTracker.get_default().disconnectObject(this);
        this._windows.forEach(window => window.disconnectObject(this));
        this._exported.unexport();
        this._windows = this._exported = this._name = this._told = null;
    }

    Front() {
        return this._front();
    }

    Activate(id) {
        const window = this._windows.get(id);
        if (window)
            Main.activateWindow(window, global.display.get_current_time_roundtrip());
    }

    Place() {
        const [x, y] = global.get_pointer();
        const {primaryMonitor, currentMonitor, focusMonitor} = Main.layoutManager;
        const rectangle = monitor => {
            const {x, y, width, height} = monitor ?? primaryMonitor ?? {x: 0, y: 0, width: 0, height: 0};
            return [x, y, width, height];
        };
        return [[x, y], rectangle(currentMonitor), rectangle(focusMonitor), global.display.get_size()];
    }

    _frontChanged() {
        const front = this._front();
        const told = JSON.stringify(front, (_key, value) => value instanceof GLib.Variant ? value.print(true) : value);
        if (told !== this._told) {
            this._told = told;
            this._exported.emit_signal('FrontChanged', new GLib.Variant('(a{sv})', [front]));
        }
    }

    _front() {
        const window = global.display.focus_window;
        if (!window)
            return {};
        this._follow(window);
        const app = Shell.WindowTracker.get_default().get_window_app(window);
        const entry = app?.is_window_backed() ? null : app?.get_app_info();
        const text = value => new GLib.Variant('s', value ?? '');
        return {
            window: new GLib.Variant('t', window.get_id()),
            hasKeyboard: new GLib.Variant('b', !global.stage.is_grabbed),
            pid: new GLib.Variant('i', window.get_pid()),
            desktopEntry: text(entry?.get_id()),
            name: text(entry?.get_name()),
            isTerminal: new GLib.Variant(
                'b', entry?.get_categories()?.split(';').includes('TerminalEmulator') ?? false),
            applicationId: text(window.get_gtk_application_id() ?? window.get_sandboxed_app_id()),
            instance: text(window.get_wm_class_instance()),
            class: text(window.get_wm_class()),
        };
    }

    _follow(window) {
        const id = window.get_id();
        if (this._windows.has(id))
            return;
        this._windows.set(id, window);
        window.connectObject(
            'notify::wm-class', () => this._frontChanged(),
            'notify::gtk-application-id', () => this._frontChanged(),
            'unmanaged', () => {
                this._windows.delete(id);
                this._exported.emit_signal('WindowClosed', new GLib.Variant('(t)', [id]));
            }, this);
    }
}
