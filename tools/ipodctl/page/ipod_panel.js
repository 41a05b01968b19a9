// The simulated iPod beside the head unit: its screen, its buttons, the cable.

import { post } from "./api.js";
import { icon, make, setText } from "./dom.js";

const MODELS = ["classic", "nano", "video", "mini", "touch", "strict", "hasty"];

export class IpodPanel {
  constructor(element) {
    this.element = element;
    this.revision = null;
    this.isBuilt = null;
    this.show(false);
  }

  /** Without a simulated iPod the panel says so. */
  show(isThere) {
    if (this.isBuilt === isThere) return;
    this.isBuilt = isThere;
    this.element.replaceChildren(make("h2", {}, "The iPod"));
    if (isThere) this.build();
    else this.element.append(make("p", { class: "said" },
      "No simulated iPod is known. scripts/demo --page starts one; ipodctl serve --control SOCKET names it."));
  }

  build() {
    this.picture = make("img", { alt: "The screen of the iPod" });
    this.cable = make("div", { class: "cable", role: "img" });
    this.pull = make("button", { onclick: () => this.toggleCable() }, "Pull the cable");
    this.model = make("select", { "aria-label": "Model" }, ...MODELS.map((name) => make("option", { value: name }, name)));
    this.swap = make("button", { onclick: () => this.change() }, "Plug this model in");
    this.fault = make("input", { placeholder: "lost@04:0018#1", "aria-label": "Fault", maxLength: 200 });
    this.said = make("p", { class: "said", role: "status" });
    this.element.append(make("div", { class: "beside" },
      make("div", {}, make("div", { class: "body" }, this.picture, this.wheel()), this.cable),
      make("div", { class: "fields" }, this.pull,
        make("label", {}, "Model", this.model), this.swap,
        make("label", {}, "Fault", this.fault),
        make("div", { class: "pair" },
          make("button", { onclick: () => this.send({ do: "fault", fault: this.fault.value }) }, "Add"),
          make("button", { onclick: () => this.send({ do: "fault", clear: true }) }, "End all")),
        this.said)));
  }

  wheel() {
    const press = (place, label, content, button) =>
      make("button", { class: place, "aria-label": label, onclick: () => this.send({ do: "press", button }) }, content);
    this.isPlaying = false;
    const toggle = make("button", { class: "bottom", "aria-label": "Play or pause",
      onclick: () => this.send({ do: "press", button: this.isPlaying ? "pause" : "play" }) }, icon("play"));
    return make("div", { class: "wheel" }, press("top", "Menu", "MENU", "menu"),
      press("left", "Previous", icon("previous"), "previous"), press("right", "Next", icon("next"), "next"), toggle);
  }

  take(status) {
    this.show(status.ok !== false);
    if (status.ok === false) return;
    this.isPlugged = status.plugged;
    this.isPlaying = status.state === "playing";
    this.cable.classList.toggle("out", !status.plugged);
    this.cable.setAttribute("aria-label", status.plugged ? "The cable is plugged in" : "The cable is pulled");
    setText(this.pull, status.plugged ? "Pull the cable" : "Plug the cable in");
    if (document.activeElement !== this.model) this.model.value = status.personality;
    if (status.screen.revision !== this.revision) {
      this.revision = status.screen.revision;
      this.picture.src = `/v1/ipod/screen.png?revision=${this.revision}`;
    }
  }

  toggleCable() {
    this.send({ do: this.isPlugged ? "unplug" : "plug" });
  }

  /** Another model needs the cable out for a moment. */
  async change() {
    if (this.isPlugged) await this.send({ do: "unplug" });
    await this.send({ do: "plug", personality: this.model.value });
  }

  async send(request) {
    try {
      const answer = await post("/v1/ipod", request);
      setText(this.said, answer.ok === false ? answer.error.message : "");
    } catch (error) {
      setText(this.said, error.message);
    }
  }
}
