// Joins the parts of the page with the events of the server.

import { follow } from "./api.js";
import { HeadUnit } from "./head_unit.js";
import { IpodPanel } from "./ipod_panel.js";
import { WirePanel } from "./wire_panel.js";

const byId = (id) => document.getElementById(id);
const unit = new HeadUnit(byId("unit"));
const ipod = new IpodPanel(byId("ipod"));
const wire = new WirePanel(byId("wire"));

const takers = {
  state: (state) => unit.takeState(state),
  console: ({ line }) => unit.takeConsole(line),
  refresh: () => {},
  wire: (document) => wire.take(document),
  finding: (finding) => wire.takeFinding(finding),
  ipod: (status) => ipod.take(status),
};
follow((topic, document) => takers[topic](document), (isThere) => unit.serverIs(isThere));

document.addEventListener("keydown", (event) => unit.key(event));

const parts = byId("parts");
const choose = (part) => {
  byId("desk").dataset.shown = part;
  for (const button of parts.children)
    button.setAttribute("aria-current", String(button.dataset.part === part));
};
parts.addEventListener("click", (event) => {
  const button = event.target.closest("button");
  if (button) choose(button.dataset.part);
});
choose("unit");
