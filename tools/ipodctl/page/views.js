// The views of the head unit: menu, list, tabs, what plays, the device.

import { clock, icon, make, setButton, setText } from "./dom.js";
import { List, Tabs } from "./lists.js";
import { Rows } from "./rows.js";

export const CATEGORIES = [
  ["artists", "Artists", "person"], ["albums", "Albums", "disc"], ["playlists", "Playlists", "list"],
  ["genres", "Genres", "tag"], ["tracks", "Tracks", "note"], ["composers", "Composers", "pen"],
  ["podcasts", "Podcasts", "voice"], ["audiobooks", "Audiobooks", "book"],
];
const NAMES = new Map([...CATEGORIES.map(([type, name]) => [type, name]), ["all-tracks", "All tracks"]]);
const ICONS = new Map([...CATEGORIES.map(([type, , symbol]) => [type, symbol]), ["all-tracks", "note"]]);
const LONG_WAIT = 2000;

export const nameOfType = (type) => NAMES.get(type) ?? type;
const typeOf = (path) => path.split("/").at(-1);
const isTracks = (path) => ["tracks", "all-tracks"].includes(typeOf(path));

/** A sentence in the middle, with what to do. */
export function message(symbol, text, more = "", action = null) {
  return make("div", { class: "message" }, icon(symbol), make("p", {}, text),
              more ? make("p", {}, more) : null, action);
}

function rowContent(row, symbol, name, more, isPlaceholder = false) {
  row.classList.toggle("all", symbol === "play");
  row.replaceChildren(
    icon(symbol),
    isPlaceholder ? make("span", { class: "wait" }) : make("span", { class: "name" }, name),
    more ? make("span", { class: "more" }, more) : "");
  row.setAttribute("aria-label", isPlaceholder ? "loading" : name);
}

class View {
  constructor(unit) {
    this.unit = unit;
    this.element = make("div", { class: "view" });
  }
  title() { return ""; }
  path() { return ""; }
  enter() {}
  leave() {}
  update() {}
  key() { return false; }
  /** The strip of buttons at the right. */
  strip(...buttons) {
    return make("div", { class: "strip" }, ...buttons);
  }
  button(symbol, label, action) {
    const button = make("button", { onclick: action });
    setButton(button, symbol, label);
    return button;
  }
}

/** A view with rows, and buttons that scroll by a page. */
class RowView extends View {
  build(label, { withLetters = null } = {}) {
    this.rows = new Rows({
      label,
      fill: (row, number) => this.fill(row, number),
      want: (first, end) => this.want(first, end),
      choose: (number) => this.choose(number),
    });
    this.letters = withLetters ? this.button("letters", "Letters", withLetters) : null;
    this.element.append(this.rows.element, this.strip(
      this.button("home", "Library", () => this.unit.home()),
      this.button("up", "Page up", () => this.rows.page(-1)),
      this.letters ?? this.unusedLetters(),
      this.button("down", "Page down", () => this.rows.page(1)),
      this.button("device", "Device", () => this.unit.open(new DeviceView(this.unit)))));
  }
  unusedLetters() {
    const button = this.button("letters", "Letters", () => {});
    button.disabled = true;
    return button;
  }
  want() {}
  enter() {
    this.rows.element.scrollTop = this.place ?? 0;
    this.rows.show(true);
  }
  leave() {
    this.place = this.rows.element.scrollTop;
  }
  key(key) {
    const steps = { ArrowDown: 1, ArrowUp: -1, PageDown: 5, PageUp: -5, Home: -1e9, End: 1e9 };
    if (key in steps) {
      this.rows.element.dataset.keys = "yes";
      this.rows.move(steps[key]);
      return true;
    }
    if (key === "Enter" && this.rows.element.dataset.keys === "yes") {
      this.choose(this.rows.here);
      return true;
    }
    return false;
  }
}

/** The kinds of lists. */
export class MenuView extends RowView {
  constructor(unit) {
    super(unit);
    this.build("Library");
    this.rows.resize(CATEGORIES.length);
  }
  title() { return this.unit.state?.ipod?.name || "Library"; }
  path() { return "Library"; }
  fill(row, number) {
    const [, name, symbol] = CATEGORIES[number];
    rowContent(row, symbol, name, "");
  }
  choose(number) {
    this.unit.open(new ListView(this.unit, CATEGORIES[number][0], []));
  }
}

export class ListView extends RowView {
  constructor(unit, path, above) {
    super(unit);
    this.listPath = path;
    this.above = above;
    this.list = new List(path, unit.generation, () => this.changed());
    this.build(nameOfType(typeOf(path)),
               { withLetters: () => unit.open(new TabsView(unit, this)) });
    this.letters.disabled = true;
    this.opened = performance.now();
    this.ticker = setInterval(() => this.remind(), 500);
    this.list.want(0, 10);
  }
  title() { return this.above.at(-1) ?? nameOfType(typeOf(this.listPath)); }
  path() {
    const facts = this.list.facts;
    const count = facts ? ` · ${facts.count.toLocaleString("en")}` : "";
    return [...this.above.slice(0, -1), nameOfType(typeOf(this.listPath))].join(" › ") + count;
  }
  leave() {
    super.leave();
    this.list.leave();
  }
  close() {
    clearInterval(this.ticker);
    this.list.leave();
  }
  extra() {
    return this.list.facts?.play_all ? 1 : 0;
  }
  want(first, end) {
    if (this.list.facts) this.list.want(Math.max(0, first - this.extra()), end - this.extra());
  }
  fill(row, number) {
    const index = number - this.extra();
    if (index < 0) {
      rowContent(row, "play", "Play all", "");
      return;
    }
    const item = this.list.item(index);
    rowContent(row, ICONS.get(typeOf(this.listPath)) ?? "note", item ? item.name || "(no name)" : "", "", !item);
  }
  choose(number) {
    const index = number - this.extra();
    const item = this.list.item(index);
    if (index < 0 || isTracks(this.listPath)) {
      this.unit.play(this.listPath, index < 0 ? "all" : index);
    } else if (item) {
      const below = item.opens[0] ?? "tracks";
      this.unit.open(new ListView(this.unit, `${this.listPath}/${index}/${below}`,
                                  [...this.above, item.name || "(no name)"]));
    }
  }
  changed() {
    const { facts, failure } = this.list;
    if (failure?.code === "stale-generation") return this.unit.iPodChanged();
    this.note?.remove();
    this.note = null;
    if (facts) {
      this.letters.disabled = !facts.tabbed;
      if (this.rows.count !== facts.count + this.extra()) this.rows.resize(facts.count + this.extra());
      else this.rows.show(true);
      if (facts.count === 0) this.say(message("list", "This list is empty."));
    } else if (failure) {
      this.say(message("cable", "The list cannot be shown.", failure.message,
                       make("button", { class: "action", onclick: () => this.again() }, "Try again")));
    }
    this.unit.showHeading();
  }
  again() {
    this.note?.remove();
    this.list.failure = null;
    this.opened = performance.now();
    this.list.want(0, 10);
  }
  say(note) {
    this.note?.remove();
    this.note = note;
    this.rows.element.prepend(note);
    note.style.height = "380px";
  }
  /** A list that needs long says what is awaited. */
  remind() {
    const waits = !this.list.facts && !this.list.failure && performance.now() - this.opened > LONG_WAIT;
    if (waits && !this.note) {
      this.say(message("list", "Waiting for the iPod…", `It counts the ${nameOfType(typeOf(this.listPath)).toLowerCase()}.`));
    }
  }
}

/** The jump letters of a long list. */
export class TabsView extends RowView {
  constructor(unit, listView) {
    super(unit);
    this.listView = listView;
    this.tabs = new Tabs(listView.listPath, unit.generation, () => this.changed());
    this.build("Letters");
    this.tabs.want(0, 12);
  }
  title() { return "Letters"; }
  path() { return this.listView.title(); }
  want(first, end) { this.tabs.want(first, end); }
  close() { this.tabs.leave(); }
  fill(row, number) {
    const tab = this.tabs.tabs[number];
    rowContent(row, "letters", tab?.label ?? "", tab ? String(tab.first + 1) : "", !tab || tab.label === null);
  }
  choose(number) {
    const tab = this.tabs.tabs[number];
    if (!tab) return;
    this.unit.back();
    this.listView.rows.scrollTo(tab.first + this.listView.extra());
  }
  changed() {
    this.rows.resize(this.tabs.tabs.length);
  }
}

const SCALE = 5 * 60 * 1000;

/** What plays. The library tells no length of a track: the line is a scale of five minutes and more. */
export class NowView extends View {
  constructor(unit) {
    super(unit);
    this.track = make("p", { class: "track clip" });
    this.artist = make("p", { class: "artist clip" });
    this.album = make("p", { class: "album clip" });
    this.done = make("div", { class: "done" });
    this.line = make("div", { class: "line", role: "img" }, this.done);
    this.elapsed = make("strong", {});
    this.scaleEnd = make("span", {});
    this.keys = {
      previous: this.makeKey("previous", "Previous track", () => unit.command("previous-track")),
      toggle: this.makeKey("play", "Play", () => unit.command("toggle"), "big"),
      next: this.makeKey("next", "Next track", () => unit.command("next-track")),
      shuffle: this.makeKey("shuffle", "Shuffle", () => unit.turn("shuffle", ["off", "tracks", "albums"])),
      repeat: this.makeKey("repeat", "Repeat", () => unit.turn("repeat", ["off", "track", "all"])),
    };
    this.element.append(make("div", { class: "now" }, this.track, this.artist, this.album,
      make("div", { class: "scale" }, this.line,
           make("div", { class: "times" }, this.elapsed, this.scaleEnd)),
      make("div", { class: "keys" }, ...Object.values(this.keys))));
    this.ticker = setInterval(() => this.move(), 250);
    this.scale = 0;
  }
  close() { clearInterval(this.ticker); }
  makeKey(symbol, label, action, className = "") {
    const button = make("button", { onclick: action, class: className });
    setButton(button, symbol, label);
    return button;
  }
  title() { return "Now playing"; }
  path() {
    const { playback } = this.unit.state ?? {};
    if (!playback || playback.index === null || playback.index < 0) return "";
    const of = playback.tracks ? ` of ${playback.tracks}` : "";
    const from = playback.origin?.name ? ` · ${playback.origin.name}` : "";
    return `Track ${playback.index + 1}${of}${from}`;
  }
  enter() { this.update(); }
  update() {
    const { playback, modes } = this.unit.state ?? {};
    if (!playback) return;
    const isStopped = playback.status === "stopped" || playback.status === null;
    setText(this.track, isStopped ? "Nothing plays" : playback.title || "(no title)");
    setText(this.artist, isStopped ? "Choose something from the library." : playback.artist || "");
    setText(this.album, isStopped ? "" : playback.album || "");
    const isPlaying = playback.status === "playing";
    setButton(this.keys.toggle, isPlaying ? "pause" : "play", isPlaying ? "Pause" : "Play");
    this.showMode(this.keys.shuffle, "Shuffle", modes?.shuffle);
    this.showMode(this.keys.repeat, "Repeat", modes?.repeat);
    for (const key of [this.keys.previous, this.keys.toggle, this.keys.next]) key.disabled = isStopped;
    this.move();
  }
  showMode(key, label, mode) {
    key.classList.toggle("on", Boolean(mode) && mode !== "off");
    key.setAttribute("aria-label", `${label}: ${mode ?? "unknown"}`);
    let text = key.querySelector("span");
    if (!text) key.append(text = make("span", {}));
    setText(text, mode ?? "…");
  }
  /** Between two answers of the iPod the time goes on here. */
  move() {
    const position = this.unit.position();
    if (position === null) {
      this.scale = 0;
      setText(this.elapsed, "");
      setText(this.scaleEnd, "");
      this.done.style.width = "0";
      return;
    }
    const scale = SCALE * Math.ceil((position + 1) / SCALE);
    if (scale !== this.scale) this.mark(scale);
    this.done.style.width = `${(100 * position) / scale}%`;
    setText(this.elapsed, clock(position));
    this.line.setAttribute("aria-label", `${clock(position)} played`);
  }
  mark(scale) {
    this.scale = scale;
    for (const tick of this.line.querySelectorAll(".tick")) tick.remove();
    const minutes = scale / 60000;
    for (let minute = 1; minute < minutes; ++minute) {
      const tick = make("div", { class: "tick" });
      tick.style.left = `${(100 * minute) / minutes}%`;
      this.line.append(tick);
    }
    setText(this.scaleEnd, `scale ends at ${minutes}:00`);
  }
}

/** The device: names, sample rate, logo, and what the library prints. */
export class DeviceView extends View {
  constructor(unit) {
    super(unit);
    this.list = make("dl", {});
    this.console = make("pre", {});
    const file = make("input", { type: "file", accept: "image/png", class: "hidden-file", hidden: true,
                                 onchange: () => this.upload(file.files[0]) });
    this.element.append(make("div", { class: "facts" }, this.list,
      make("div", { class: "actions" }, file,
           make("button", { class: "action", onclick: () => file.click() }, "Choose a logo…"),
           make("button", { class: "action plain", onclick: () => unit.reconnect() }, "Connect again")),
      make("p", { class: "said" }, "A new logo or connection stops playback."), this.console),
      this.strip(this.button("home", "Library", () => unit.home())));
  }
  title() { return "Device"; }
  enter() { this.update(); }
  update() {
    const { ipod, audio, connection, generation } = this.unit.state ?? {};
    const facts = [["Name", ipod?.name], ["Serial number", ipod?.serial],
                   ["Sample rate", audio?.sample_rate ? `${audio.sample_rate} Hz` : null],
                   ["Connection", connection?.message], ["Connections", generation]];
    this.list.replaceChildren(...facts.flatMap(([name, value]) =>
      [make("dt", {}, name), make("dd", {}, String(value ?? "–"))]));
    setText(this.console, this.unit.console.slice(-12).join("\n"));
  }
  async upload(file) {
    if (!file) return;
    const bytes = new Uint8Array(await file.arrayBuffer());
    let text = "";
    for (const byte of bytes) text += String.fromCharCode(byte);
    this.unit.attempt("/v1/logo", { png: btoa(text) }, "The logo is sent with the next connection.");
  }
}
