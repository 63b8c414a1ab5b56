// Shows the panel's state and uploads, and sets its answers.

import { StrokeSender, TouchSurface, tellsEveryMove } from "/simulator/touch.js";

const STATE_MS = 1000;
const ANSWER_MS = 5000; // without a network, the browser could wait for minutes
const SERVICE_MODES = [
  ["OK", "ok"], ["Casting is off", "cast-off"], ["Busy", "busy"], ["Error 500", "status 500"],
  ["Not text", "invalid"], ["Slow", "delay 3000"], ["Silence", "silence"], ["Hang up", "close"], ["Cut off", "cut"],
];
const FAULTS = [
  { name: "Heartbeats", key: "heartbeat", path: "reply", modes: SERVICE_MODES },
  {
    name: "Touchback", key: "touchback", path: "reply",
    modes: [["OK", "ok"], ["Error 500", "status 500"], ["Silence", "silence"], ["Hang up", "close"]],
  },
  {
    name: "Casting trigger", key: "trigger", path: "reply",
    modes: [["OK", "ok"], ["Error 500", "status 500"], ["Silence", "silence"], ["Hang up", "close"]],
  },
  {
    name: "Uploads", key: "upload", path: "upload-reply",
    modes: [["OK", "ok"], ["Error 500", "status 500"], ["Refuse early", "status 403 early"],
      ["Disk full", "disk-full"], ["Slow", "slow"], ["Silence", "silence"], ["Reset", "reset"], ["Cut off", "cut"]],
  },
];

const byId = (id) => document.getElementById(id);

/// Writes only changes, since screen readers announce every write.
function show(id, text) {
  if (byId(id).textContent !== text)
    byId(id).textContent = text;
}

/// Does not wrap, even with "AM" at the end.
function timeOfDay(time) {
  return new Date(time).toLocaleTimeString().replaceAll(" ", "\u00a0");
}

function ago(time) {
  const seconds = Math.max(0, Math.round((Date.now() - time) / 1000));
  return seconds < 60 ? `${seconds} s ago` : timeOfDay(time);
}

function sizeText(bytes) {
  if (bytes < 1000)
    return `${bytes} bytes`;
  return bytes < 1e6 ? `${Math.round(bytes / 1000)} kB` : `${(bytes / 1e6).toFixed(1)} MB`;
}

function occurrences(list, otherwise) {
  return list.count === 0 ? otherwise : `${list.count}, last ${ago(list.times.at(-1))}`;
}

function makeFaults() {
  for (const fault of FAULTS) {
    const group = document.createElement("fieldset");
    group.appendChild(document.createElement("legend")).textContent = fault.name;
    fault.buttons = fault.modes.map(([name, mode]) => faultButton(fault, name, mode));
    group.append(...fault.buttons);
    byId("faults").append(group);
  }
}

function faultButton(fault, name, mode) {
  const button = document.createElement("button");
  button.type = "button";
  button.textContent = name;
  button.dataset.mode = mode;
  button.setAttribute("aria-label", `${fault.name}: ${name}`);
  button.setAttribute("aria-pressed", "false");
  button.addEventListener("click", () => choose(fault, mode));
  return button;
}

async function choose(fault, mode) {
  const body = fault.path === "reply" ? `${fault.key} ${mode}` : mode;
  try {
    const answer = await fetch(`/simulator/${fault.path}`, { method: "POST", body });
    show("fault-message", answer.ok ? "" : (await answer.text()).trim());
  } catch {
    show("fault-message", "The panel cannot be reached.");
  }
  await refresh();
}

function showFaults(reply) {
  for (const fault of FAULTS)
    for (const button of fault.buttons) {
      const mode = button.dataset.mode;
      const isChosen = reply[fault.key] === mode;
      button.setAttribute("aria-pressed", String(isChosen));
    }
}

function showTouchback(target, replay) {
  const isOn = Boolean(target && target.enabled);
  show("touchback", isOn ? (target.isHDMI ? "on (cable)" : "on (cast)") : "off");
  show("surface-message", isOn ? "" : "Nobody has asked for touches yet: cast, or turn the wireless touch on.");
  byId("surface").classList.toggle("live", isOn);
  byId("replay").hidden = !replay;
  byId("replay").disabled = !isOn || Boolean(replay && replay.playing);
  byId("replay").textContent = replay && replay.playing ? "The recording is being played" : "Play the recording";
}

function uploadItem(upload) {
  const item = document.createElement("li");
  const name = upload.srcfilename || upload.fileName;
  item.append(name);
  item.appendChild(document.createElement("small")).textContent =
    `${sizeText(upload.size)}, from ${upload.from}, ${timeOfDay(upload.time)}`;
  if (upload.storedName && upload.picture)
    item.append(picture(upload.storedName, name));
  return item;
}

function picture(storedName, name) {
  const image = document.createElement("img");
  image.alt = `The picture ${name}`;
  image.addEventListener("error", () => image.remove()); // it only begins like a picture
  image.src = `/simulator/uploads/${encodeURIComponent(storedName)}`;
  return image;
}

let shownUploads = 0;

function showUploads(uploads) {
  const fresh = Math.min(uploads.count - shownUploads, uploads.list.length);
  if (uploads.count < shownUploads) { // the panel was restarted
    byId("uploads").replaceChildren();
    byId("uploads").prepend(...uploads.list.map(uploadItem).reverse());
  } else if (fresh > 0) {
    byId("uploads").prepend(...uploads.list.slice(-fresh).map(uploadItem).reverse());
  }
  shownUploads = uploads.count;
  byId("uploads-empty").hidden = uploads.count > 0;
}

function showState(state) {
  show("name", state.name);
  show("model", `${state.model}, ${state.address}`);
  document.title = `${state.name}: simulated panel`;
  show("computer", state.touchTarget?.ip || state.pings.lastIp || "none yet");
  show("pings", occurrences(state.pings, "none yet"));
  show("triggers", occurrences(state.triggers, "not opened"));
  show("touches", String(state.touchesSent));
  showTouchback(state.touchTarget, state.replay);
  showFaults(state.reply);
  showUploads(state.uploads);
}

function showConnection(isThere) {
  show("connection", isThere ? "Connected" : "Not reached");
  byId("connection").classList.toggle("problem", !isThere);
}

async function refresh() {
  try {
    const answer = await fetch("/simulator/state", { cache: "no-store", signal: AbortSignal.timeout(ANSWER_MS) });
    showState(await answer.json());
    showConnection(true);
  } catch {
    showConnection(false);
  }
}

async function watch() {
  if (!document.hidden)
    await refresh();
  setTimeout(watch, STATE_MS);
}

async function playRecording() {
  byId("replay").disabled = true;
  const answer = fetch("/simulator/replay", { method: "POST" });
  try {
    const text = await (await answer).text();
    show("surface-report", text.trim());
  } catch {
    showConnection(false);
  }
}

makeFaults();
const sender = new StrokeSender((reason) => show("surface-report", reason && `Not sent: ${reason}.`));
byId("moves-hint").hidden = tellsEveryMove;
new TouchSurface(byId("surface"), byId("trail"), sender);
byId("full-screen").hidden = !document.fullscreenEnabled;
byId("full-screen").addEventListener("click", () => byId("surface").requestFullscreen());
byId("replay").addEventListener("click", playRecording);
watch();
