// A list of any length: only the rows in view exist.

import { make } from "./dom.js";

export const ROW = 76;
const BEYOND = 3;

export class Rows {
  /** `fill(row, number)` shows row `number`; `want(first, end)` hears which rows are in view. */
  constructor({ fill, want, choose, label }) {
    this.fill = fill;
    this.want = want;
    this.count = 0;
    this.here = 0;
    this.pool = new Map();
    this.space = make("div", { class: "space" });
    this.element = make("div", { class: "rows", role: "listbox", tabIndex: 0, "aria-label": label },
                        this.space);
    this.element.addEventListener("scroll", () => this.show(), { passive: true });
    this.space.addEventListener("click", (event) => {
      const row = event.target.closest(".row");
      if (row) choose(Number(row.dataset.number));
    });
    this.choose = choose;
  }

  resize(count) {
    this.count = count;
    this.space.style.height = `${count * ROW}px`;
    this.show(true);
  }

  get first() {
    return Math.floor(this.element.scrollTop / ROW);
  }

  scrollTo(number) {
    this.element.scrollTop = number * ROW;
    this.show();
  }

  page(pages) {
    const visible = Math.floor(this.element.clientHeight / ROW);
    this.scrollTo(Math.min(Math.max(0, this.first + pages * visible), Math.max(0, this.count - visible)));
  }

  /** Moves the marked row, and shows it. */
  move(step) {
    this.here = Math.min(Math.max(0, this.here + step), Math.max(0, this.count - 1));
    const top = this.here * ROW;
    const height = this.element.clientHeight;
    if (top < this.element.scrollTop) this.element.scrollTop = top;
    if (top + ROW > this.element.scrollTop + height) this.element.scrollTop = top + ROW - height;
    this.show(true);
  }

  show(isRefill = false) {
    const visible = Math.ceil(this.element.clientHeight / ROW) || 5;
    const first = Math.max(0, this.first - BEYOND);
    const end = Math.min(this.count, this.first + visible + BEYOND);
    for (const [number, row] of this.pool) {
      if (number >= first && number < end) continue;
      row.remove();
      this.pool.delete(number);
    }
    for (let number = first; number < end; ++number) {
      const known = this.pool.get(number);
      if (known && !isRefill) continue;
      this.put(number, known);
    }
    this.want(this.first, Math.min(this.count, this.first + visible + 1));
  }

  put(number, known) {
    const row = known ?? make("button", { class: "row", role: "option", tabIndex: -1 });
    row.dataset.number = number;
    row.style.top = `${number * ROW}px`;
    row.classList.toggle("here", number === this.here && this.element.dataset.keys === "yes");
    this.fill(row, number);
    if (!known) {
      this.space.append(row);
      this.pool.set(number, row);
    }
  }
}
