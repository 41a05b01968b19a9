// The head unit: one view at a time, the bar above it, and the sentence for the driver.

import { post } from "./api.js";
import { icon, make, setButton, setText } from "./dom.js";
import { DeviceView, ListView, MenuView, message, NowView } from "./views.js";

const SHOWN_FOR = 4000;
const LONG_WAIT = 2000;
const SYMBOLS = { absent: "cable", connecting: "cable", settling: "cable", lost: "cable", odd: "device" };

export class HeadUnit {
  constructor(element) {
    this.element = element;
    this.screen = element.querySelector("#screen");
    this.notice = element.querySelector("#notice");
    this.state = null;
    this.received = 0;
    this.console = [];
    this.isServerThere = true;
    this.stack = [];
    this.overlay = null;
    this.bar();
    this.home();
  }

  get generation() {
    return this.state?.generation ?? 0;
  }

  bar() {
    const find = (id) => this.element.querySelector(`#${id}`);
    this.buttons = { back: find("back"), playing: find("playing"), toggle: find("toggle"), next: find("next") };
    this.heading = { title: find("title"), path: find("path") };
    setButton(this.buttons.back, "back", "Back");
    setButton(this.buttons.playing, "note", "What plays");
    setButton(this.buttons.toggle, "play", "Play");
    setButton(this.buttons.next, "next", "Next track");
    this.buttons.back.onclick = () => this.back();
    this.buttons.playing.onclick = () => this.showPlaying();
    this.buttons.toggle.onclick = () => this.command("toggle");
    this.buttons.next.onclick = () => this.command("next-track");
  }

  // ---- views

  get view() {
    return this.stack.at(-1);
  }

  open(view) {
    this.view?.leave();
    this.stack.push(view);
    this.show();
  }

  back() {
    if (this.stack.length < 2) return;
    this.view.leave();
    this.view.close?.();
    this.stack.pop();
    this.show();
  }

  home() {
    for (const view of this.stack) view.close?.();
    this.stack = [];
    this.open(new MenuView(this));
  }

  showPlaying() {
    if (!(this.view instanceof NowView)) this.open(new NowView(this));
  }

  show() {
    this.screen.replaceChildren(this.view.element);
    this.view.enter();
    this.cover();
    this.showHeading();
  }

  showHeading() {
    const view = this.view;
    setText(this.heading.title, view.title());
    setText(this.heading.path, view.path());
    this.buttons.back.disabled = this.stack.length < 2;
    this.buttons.playing.disabled = view instanceof NowView;
  }

  /** Another iPod, or the same once more: its lists are new. What plays and the device stay. */
  iPodChanged() {
    const old = this.stack;
    this.stack = [new MenuView(this)];
    for (const view of old) {
      const stays = view instanceof NowView || view instanceof DeviceView;
      if (stays && view === old.at(-1)) this.stack.push(view);
      else view.close?.();
    }
    this.show();
  }

  // ---- what the server tells

  takeState(state) {
    const isNew = this.state !== null && state.generation !== this.state.generation;
    this.state = state;
    this.received = performance.now();
    if (isNew) this.iPodChanged();
    const isPlaying = state.playback?.status === "playing";
    setButton(this.buttons.toggle, isPlaying ? "pause" : "play", isPlaying ? "Pause" : "Play");
    const isReady = state.connection.stage === "ready";
    this.buttons.toggle.disabled = this.buttons.next.disabled = !isReady;
    this.cover();
    this.view.update();
    this.showHeading();
  }

  takeConsole(line) {
    this.console.push(line);
    if (this.console.length > 200) this.console.shift();
    this.view.update();
  }

  serverIs(isThere) {
    this.isServerThere = isThere;
    this.cover();
  }

  /** Instead of a view: the sentence that says why there is none. */
  cover() {
    const text = this.sentence();
    if (text === null) {
      if (this.overlay) this.screen.replaceChildren(this.view.element);
      if (this.overlay) this.view.enter();
      this.overlay = null;
      return;
    }
    const [symbol, main, more] = text;
    const key = `${symbol}\n${main}\n${more}`;
    if (this.overlay === key && !this.screen.contains(this.view.element)) return;
    this.overlay = key;
    const view = make("div", { class: "view", role: "alert" }, message(symbol, main, more));
    this.screen.replaceChildren(view);
  }

  sentence() {
    if (!this.isServerThere)
      return ["cable", "The head unit's program does not answer.", "Start ipodctl serve again. This page waits for it."];
    if (!this.state) return ["cable", "Starting…", ""];
    const { stage, message: text, retry_in_ms: retry } = this.state.connection;
    if (stage === "ready" || stage === "odd" || this.view instanceof DeviceView) return null;
    const more = stage === "connecting" || stage === "settling" ? "This takes a few seconds."
               : retry !== null ? "It is connected again by itself." : "";
    return [SYMBOLS[stage] ?? "cable", text, more];
  }

  /** The position in the track now, in milliseconds; null when nothing plays. */
  position() {
    const playback = this.state?.playback;
    if (!playback || !["playing", "paused"].includes(playback.status)) return null;
    const since = playback.status === "playing" ? performance.now() - this.received : 0;
    return (playback.position_ms ?? 0) + since;
  }

  // ---- what the driver does

  async command(name) {
    if (name === "toggle") {
      // The answer to a touch is at once; the iPod's own state follows.
      const wasPlaying = this.state?.playback?.status === "playing";
      setButton(this.buttons.toggle, wasPlaying ? "play" : "pause", wasPlaying ? "Play" : "Pause");
    }
    await this.attempt("/v1/command", { command: name });
  }

  async play(path, index) {
    this.open(new NowView(this));
    await this.attempt("/v1/play", { generation: this.generation, path, index });
  }

  async turn(mode, values) {
    const now = this.state?.modes?.[mode];
    await this.attempt("/v1/modes", { [mode]: values[(values.indexOf(now) + 1) % values.length] });
  }

  async reconnect() {
    await this.attempt("/v1/reconnect", {});
  }

  async attempt(path, body, done = "") {
    const waiting = setTimeout(() => this.say("Waiting for the iPod…"), LONG_WAIT);
    try {
      await post(path, body);
      clearTimeout(waiting);
      this.say(done);
    } catch (error) {
      clearTimeout(waiting);
      if (error.code === "stale-generation") return this.say("Another iPod is connected. Choose again.");
      this.say(error.status ? error.message : "The head unit's program does not answer.");
    }
  }

  say(text) {
    clearTimeout(this.silence);
    this.notice.hidden = !text;
    setText(this.notice, text);
    if (text) this.silence = setTimeout(() => { this.notice.hidden = true; }, SHOWN_FOR);
  }

  // ---- keyboard

  key(event) {
    if (event.target.closest("input, select, textarea")) return;
    const actions = { Escape: () => this.back(), Backspace: () => this.back(), " ": () => this.command("toggle"),
                      n: () => this.command("next-track"), p: () => this.command("previous-track"),
                      "/": () => this.home(), ArrowLeft: () => this.back() };
    const isButton = event.target.closest("button") && ["Enter", " "].includes(event.key);
    if (isButton || event.ctrlKey || event.altKey || event.metaKey) return;
    if (this.overlay === null && this.view.key(event.key)) {
      event.preventDefault();
    } else if (event.key in actions) {
      event.preventDefault();
      actions[event.key]();
    }
  }
}
