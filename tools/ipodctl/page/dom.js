// Elements are made here. Texts of the iPod become text nodes, never markup.

const SVG = "http://www.w3.org/2000/svg";

/** Returns an element with these properties ("class" and "aria-..." too) and children. */
export function make(name, properties = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (key.startsWith("on")) element.addEventListener(key.slice(2), value);
    else if (key in element && key !== "list") element[key] = value;
    else element.setAttribute(key, value);
  }
  if (properties.class) element.className = properties.class;
  element.append(...children.filter((child) => child !== null && child !== undefined));
  return element;
}

export function icon(name) {
  const svg = document.createElementNS(SVG, "svg");
  svg.setAttribute("class", "icon");
  svg.setAttribute("aria-hidden", "true");
  const use = document.createElementNS(SVG, "use");
  use.setAttribute("href", `icons.svg#${name}`);
  svg.append(use);
  return svg;
}

/** Shows another icon, and tells a screen reader what the button does now. */
export function setButton(button, iconName, label) {
  if (button.dataset.icon !== iconName) button.replaceChildren(icon(iconName));
  button.dataset.icon = iconName;
  button.setAttribute("aria-label", label);
  button.title = label;
}

export function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

/** "3:07" */
export function clock(milliseconds) {
  const seconds = Math.max(0, Math.floor(milliseconds / 1000));
  return `${Math.floor(seconds / 60)}:${String(seconds % 60).padStart(2, "0")}`;
}
