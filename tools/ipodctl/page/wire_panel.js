// The wire below the head unit: messages as they pass, findings in words, traces.

import { post } from "./api.js";
import { make, setText } from "./dom.js";

const MOST = 400;

export class WirePanel {
  constructor(element) {
    this.isPaused = false;
    this.follows = true;
    this.messages = make("div", { class: "messages", tabIndex: 0, role: "log", "aria-label": "Messages" });
    this.messages.addEventListener("scroll", () => {
      const { scrollTop, clientHeight, scrollHeight } = this.messages;
      this.follows = scrollTop + clientHeight > scrollHeight - 40;
    }, { passive: true });
    this.findings = make("div", { class: "findings" });
    this.said = make("p", { class: "said", role: "status" });
    this.pause = make("button", { onclick: () => this.togglePause() }, "Pause");
    const load = make("input", { type: "file", accept: ".trace,text/plain",
                                 onchange: () => this.load(load.files[0]) });
    element.append(
      make("div", { class: "tools" }, make("h2", {}, "The wire"), this.pause,
        make("button", { onclick: () => this.clear() }, "Clear"),
        make("a", { href: "/v1/trace", download: "ipod.trace" }, "Download the trace"),
        make("label", { class: "file" }, "Explain a trace…", load)),
      this.findings, this.messages, this.said);
  }

  take(document) {
    if (!this.isPaused) this.add(document.messages);
  }

  add(messages) {
    this.messages.append(...messages.map((message) => this.line(message)));
    while (this.messages.childElementCount > MOST) this.messages.firstChild.remove();
    if (this.follows) this.messages.scrollTop = this.messages.scrollHeight;
  }

  line({ time, direction, text, notes }) {
    const words = notes?.length ? `  [${notes.join("] [")}]` : "";
    const className = notes?.length ? "wrong" : direction === ">" ? "host" : "";
    return make("div", { class: className }, `${time.toFixed(3).padStart(9)} ${direction} ${text}${words}`);
  }

  takeFinding(finding) {
    this.findings.append(make("div", { class: "finding", role: "alert" },
      make("strong", {}, finding.cause), finding.explanation, make("br"), finding.try));
    while (this.findings.childElementCount > 3) this.findings.firstChild.remove();
  }

  togglePause() {
    this.isPaused = !this.isPaused;
    setText(this.pause, this.isPaused ? "Go on" : "Pause");
  }

  clear() {
    this.messages.replaceChildren();
    this.findings.replaceChildren();
    setText(this.said, "");
  }

  async load(file) {
    if (!file) return;
    try {
      const answer = await post("/v1/trace", { trace: await file.text() });
      this.clear();
      if (!this.isPaused) this.togglePause();
      this.add(answer.messages.slice(-MOST));
      for (const finding of answer.findings) this.takeFinding(finding);
      const faults = answer.findings.length === 0 ? "no fault found" : `${answer.findings.length} found`;
      setText(this.said, `${file.name}: ${answer.messages.length} messages, ${faults}. Go on shows the wire again.`);
    } catch (error) {
      setText(this.said, `${file.name}: ${error.message}`);
    }
  }
}
