// Turns what a finger, a pen, a mouse or the keyboard does on the surface into touches of the panel.

const RANGE = 32767; // of the last column and row, whatever the size
const MAX_LINES = 2000; // in one request
const RETRY_MS = 500;

/// Browsers report positions between two frames only to pages loaded over HTTPS or from the same computer
/// (Pointer Events, Level 3, getCoalescedEvents).
export const tellsEveryMove = "getCoalescedEvents" in PointerEvent.prototype;

/// Sends strokes in order, one request at a time, with all lines that have gathered meanwhile. Parts are numbered, so that
/// the panel can order them and ignore repeated ones.
export class StrokeSender {
  /// `tellRefusal` is called with the panel's reason, and with "" when another stroke begins.
  constructor(tellRefusal) {
    this.tellRefusal = tellRefusal;
    this.parts = []; // {id, lines}, in order; only the last one grows
    this.numbers = new Map(); // of the next part of each stroke that waits here
    this.dropped = null; // the stroke that the panel refused
    this.isSending = false;
  }

  begin() {
    if (this.parts.length === 0)
      this.numbers.clear();
    this.tellRefusal("");
    this.id = Array.from(crypto.getRandomValues(new Uint32Array(3)), (word) => word.toString(36)).join("-");
  }

  add(word, point) {
    if (this.id === this.dropped)
      return;
    const last = this.parts.at(-1);
    const isOpen = last && last.id === this.id && !last.isSent && last.lines.length < MAX_LINES;
    const part = isOpen ? last : { id: this.id, lines: [], isSent: false };
    if (!isOpen)
      this.parts.push(part);
    part.lines.push(`${word} ${point.x} ${point.y}`);
    this.pump();
  }

  async pump() {
    if (this.isSending)
      return;
    this.isSending = true;
    while (this.parts.length > 0)
      await this.send(this.parts[0]);
    this.isSending = false;
  }

  async send(part) {
    try {
      const answer = await this.post(part, false);
      if (answer.status === 503)
        throw new Error("the panel is busy");
      this.parts = this.parts.filter((other) => other !== part);
      if (!answer.ok)
        this.drop(part.id, (await answer.text()).trim());
    } catch {
      // It may have arrived; the panel ignores repeated parts.
      await new Promise((resolve) => setTimeout(resolve, RETRY_MS));
    }
  }

  post(part, isLast) {
    if (part.number === undefined) {
      part.number = this.numbers.get(part.id) ?? 0;
      this.numbers.set(part.id, part.number + 1);
    }
    part.isSent = true;
    return fetch(`/simulator/stroke?id=${part.id}&part=${part.number}`,
      { method: "POST", body: part.lines.join("\n"), keepalive: isLast });
  }

  drop(id, reason) {
    this.dropped = id;
    this.parts = this.parts.filter((part) => part.id !== id);
    this.tellRefusal(reason);
  }

  /// Before the page is closed: sends what is left, in requests that outlive it.
  flush() {
    for (const part of this.parts.filter((waiting) => !waiting.isSent))
      this.post(part, true).catch(() => {});
  }
}

/// Draws the latest touches.
class Trail {
  constructor(canvas) {
    this.canvas = canvas;
    this.context = canvas.getContext("2d");
  }

  clear() {
    const scale = window.devicePixelRatio || 1;
    this.canvas.width = this.canvas.clientWidth * scale;
    this.canvas.height = this.canvas.clientHeight * scale;
    this.last = null;
  }

  to(point) {
    const x = point.x / RANGE * this.canvas.width;
    const y = point.y / RANGE * this.canvas.height;
    const pen = this.context;
    pen.lineCap = "round";
    pen.lineWidth = 4 * (window.devicePixelRatio || 1);
    pen.strokeStyle = "#0b7a65";
    pen.beginPath();
    pen.moveTo(this.last ? this.last.x : x, this.last ? this.last.y : y);
    pen.lineTo(x, y);
    pen.stroke();
    this.last = { x, y };
  }
}

const clamp = (value) => Math.min(Math.max(Math.round(value), 0), RANGE);

/// One finger at a time; others are ignored meanwhile.
export class TouchSurface {
  constructor(element, canvas, sender) {
    this.element = element;
    this.trail = new Trail(canvas);
    this.sender = sender;
    this.pointer = null; // the id of the pointer that is down, or "keyboard"
    this.point = { x: clamp(RANGE / 2), y: clamp(RANGE / 2) };
    this.listen();
  }

  listen() {
    const on = (type, handler) => this.element.addEventListener(type, handler);
    on("pointerdown", (event) => this.pointerDown(event));
    // On the window, since a browser may end the capture of a pointer that is still down.
    addEventListener("pointermove", (event) => this.pointerMoved(event));
    addEventListener("pointerup", (event) => this.pointerUp(event));
    addEventListener("pointercancel", (event) => this.pointerCancelled(event));
    on("lostpointercapture", (event) => this.captureLost(event));
    on("contextmenu", (event) => event.preventDefault());
    on("keydown", (event) => this.keyDown(event));
    on("keyup", (event) => this.keyUp(event));
    on("blur", () => this.pointer === "keyboard" && this.up(this.point));
    addEventListener("pagehide", () => this.leave());
    document.addEventListener("visibilitychange", () => document.hidden && this.leave());
  }

  /// In panel coordinates.
  pointOf(event) {
    const area = this.element.getBoundingClientRect();
    return {
      x: clamp((event.clientX - area.left) / area.width * RANGE),
      y: clamp((event.clientY - area.top) / area.height * RANGE),
    };
  }

  pointerDown(event) {
    if (this.pointer !== null || event.button !== 0)
      return;
    event.preventDefault();
    this.element.focus({ preventScroll: true, focusVisible: false });
    this.down(event.pointerId, this.pointOf(event));
    this.capture(event.pointerId);
  }

  capture(pointer) {
    try {
      this.element.setPointerCapture(pointer);
    } catch {
      this.up(this.point); // that pointer has gone
    }
  }

  captureLost(event) {
    if (event.pointerId === this.pointer)
      this.capture(event.pointerId);
  }

  pointerMoved(event) {
    if (event.pointerId !== this.pointer)
      return;
    if (event.buttons === 0) { // it was released outside the window
      this.up(this.point);
      return;
    }
    const moves = tellsEveryMove ? event.getCoalescedEvents() : [];
    for (const move of moves.length > 0 ? moves : [event])
      this.move(this.pointOf(move));
  }

  pointerUp(event) {
    if (event.pointerId === this.pointer)
      this.up(this.pointOf(event));
  }

  /// The position of a cancelled pointer is meaningless.
  pointerCancelled(event) {
    if (event.pointerId === this.pointer)
      this.up(this.point);
  }

  keyDown(event) {
    if (event.altKey || event.ctrlKey || event.metaKey) // shortcuts of the browser
      return;
    const step = RANGE / (event.shiftKey ? 400 : 40);
    const way = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] }[event.key];
    if (way) {
      event.preventDefault();
      this.keyMoved({ x: clamp(this.point.x + way[0] * step), y: clamp(this.point.y + way[1] * step) });
    } else if (event.key === " ") {
      event.preventDefault();
      if (this.pointer === null)
        this.down("keyboard", this.point);
    }
  }

  keyMoved(point) {
    if (this.pointer === "keyboard")
      this.move(point);
    else if (this.pointer === null) {
      this.point = point;
      this.trail.clear();
      this.trail.to(point);
    }
  }

  keyUp(event) {
    if (event.key !== " " || this.pointer !== "keyboard")
      return;
    event.preventDefault();
    this.up(this.point);
  }

  down(pointer, point) {
    this.pointer = pointer;
    this.sender.begin();
    this.trail.clear();
    this.tell("DOWN", point);
  }

  move(point) {
    if (point.x !== this.point.x || point.y !== this.point.y)
      this.tell("MOVE", point);
  }

  up(point) {
    this.pointer = null;
    this.tell("UP", point);
  }

  tell(word, point) {
    this.point = point;
    this.trail.to(point);
    this.sender.add(word, point);
  }

  leave() {
    if (this.pointer !== null)
      this.up(this.point);
    this.sender.flush();
  }
}
