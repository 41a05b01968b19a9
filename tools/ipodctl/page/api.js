// The requests to `ipodctl serve`.

/** A request that was refused. The message says what to do. */
export class Refused extends Error {
  constructor(status, error) {
    super(error.message ?? "The server answers nothing usable.");
    this.status = status;
    this.code = error.code ?? "no-answer";
  }
}

async function answerOf(response) {
  const body = await response.json().catch(() => ({}));
  if (!response.ok) throw new Refused(response.status, body.error ?? {});
  return body;
}

export async function get(path, signal) {
  return answerOf(await fetch(path, { signal }));
}

export async function post(path, body) {
  return answerOf(await fetch(path, {
    method: "POST",
    headers: { "Content-Type": "application/json" },
    body: JSON.stringify(body),
  }));
}

const TOPICS = ["state", "console", "refresh", "wire", "finding", "ipod"];

/** Calls `take(topic, document)` for each event, and `reach(isThere)` when the server comes or goes. */
export function follow(take, reach) {
  let source = null;
  const open = () => {
    source = new EventSource("/v1/events");
    source.onopen = () => reach(true);
    source.onerror = () => {
      reach(false);
      // The browser connects again by itself unless the server refused.
      if (source.readyState === EventSource.CLOSED) setTimeout(open, 2000);
    };
    for (const topic of TOPICS) {
      source.addEventListener(topic, (event) => take(topic, JSON.parse(event.data)));
    }
  };
  open();
}
