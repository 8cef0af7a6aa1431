"use strict";

const TEXTS = {
  zh: {
    other: "English", hint: "把卡片照片拖到这里，或粘贴，或选择文件", choose: "选择图片", photograph: "拍照", live: "实时扫描",
    stop: "停止", reading: "正在识别…", found: "识别完成", none: "没有结果", token: "访问令牌", continue: "继续", show: "显示",
    hide: "隐藏", copy: "复制", copied: "已复制", unknown: "无法识别的卡片", doubtful: "存疑", absent: "—",
    denied: "无法使用相机", failed: "无法连接服务", busy: "服务繁忙，请稍后再试", aim: "把卡片对准画面", yes: "是", no: "否",
    privacy: "图片只发送到这台服务，不保存到磁盘。",
  },
  en: {
    other: "中文", hint: "Drop a photo of a card here, paste it, or choose a file", choose: "Choose a picture",
    photograph: "Take a photo", live: "Live camera", stop: "Stop", reading: "Reading…", found: "Read", none: "Nothing was read",
    token: "Access token", continue: "Continue", show: "Show", hide: "Hide", copy: "Copy", copied: "Copied",
    unknown: "A card of an unknown kind", doubtful: "doubtful", absent: "—", denied: "The camera cannot be used",
    failed: "The service cannot be reached", busy: "The service is busy, try again in a moment",
    aim: "Hold the card into the picture", yes: "Yes", no: "No",
    privacy: "The picture goes to this service alone and is not kept on disk.",
  },
};
/** Frames of the camera are made no wider than this. */
const FRAME_WIDTH = 1600;
/** A masked value keeps this many characters at its end. */
const SHOWN_AT_END = 4;
/** Outside of a secure context there is no camera. */
const CAMERA = { video: { facingMode: "environment", width: { ideal: 1920 } } };
const COPIED_MILLISECONDS = 1500;

const at = (id) => document.getElementById(id);
let language = (navigator.language || "zh").startsWith("zh") ? "zh" : "en";
let words = null; // what the service says in the language
let last = null; // the last answer, drawn anew in another language
let stream = null; // of the camera
let asked = 0; // answers to older pictures are passed over

const text = (name) => TEXTS[language][name];

async function speak(next) {
  language = next;
  document.documentElement.lang = language;
  for (const element of document.querySelectorAll("[data-text]")) element.textContent = text(element.dataset.text);
  at("language").textContent = text("other");
  at("live").textContent = text(stream ? "stop" : "live");
  const answer = await fetch(`v1/wordings/${language}`);
  words = await answer.json();
  if (last) draw(last);
}

function say(message) {
  at("status").textContent = message;
}

/** The answer to a picture; null when there is none that can be shown, which is then said. */
async function read(blob) {
  const number = ++asked;
  const token = sessionStorage.getItem("token");
  const headers = { "Content-Type": "application/octet-stream" };
  if (token) headers.Authorization = `Bearer ${token}`;
  let response;
  try {
    response = await fetch("v1/cards", { method: "POST", headers, body: blob });
  } catch {
    say(text("failed"));
    return null;
  }
  at("access").hidden = response.status !== 401;
  if (response.status === 503) say(text("busy"));
  if (response.status === 401) at("token").focus();
  const answer = await response.json().catch(() => null);
  if (number !== asked || response.status === 401 || response.status === 503) return null;
  return answer;
}

let picked = null;
async function pick(blob) {
  stopCamera();
  picked = blob;
  last = null;
  at("cards").replaceChildren();
  at("outlines").replaceChildren();
  const picture = at("picture");
  URL.revokeObjectURL(picture.src);
  picture.src = URL.createObjectURL(blob);
  picture.hidden = false;
  at("hint").hidden = true;
  say(text("reading"));
  // A browser that cannot show the format still gets the fields.
  await picture.decode().catch(() => { picture.hidden = true; });
  const answer = await read(blob);
  if (answer) show(answer, picture.naturalWidth, picture.naturalHeight);
}

function show(answer, width, height) {
  last = answer;
  draw(answer);
  outline(answer.cards || [], width, height);
}

function outline(cards, width, height) {
  const drawing = at("outlines");
  drawing.setAttribute("viewBox", `0 0 ${width || 1} ${height || 1}`);
  drawing.replaceChildren(...cards.map((card) => {
    const polygon = document.createElementNS("http://www.w3.org/2000/svg", "polygon");
    polygon.setAttribute("points", card.corners.map((point) => point.join(",")).join(" "));
    if (!card.result) polygon.classList.add("unread");
    return polygon;
  }));
}

/** Why there is no record, for people. */
function problemOf(answer) {
  const { error, report } = answer;
  const why = report && words.reasons[report.reason];
  if (why && (!error || error.code === "insufficient_text")) return why;
  const message = (error && (words.errors[error.code] || error.message)) || text("none");
  const more = why || (error && error.context && error.context.reason);
  return more ? `${message}: ${more}` : message;
}

function draw(answer) {
  const cards = answer.cards || [];
  say(cards.length ? (cards.some((card) => card.result) ? text("found") : text("none")) : problemOf(answer));
  at("cards").replaceChildren(...cards.map(drawCard));
}

function drawCard(card) {
  const drawn = at("card").content.cloneNode(true);
  const kind = words.kinds[card.kind];
  drawn.querySelector("h2").textContent = kind ? kind.label : text("unknown");
  if (!card.result) {
    const problem = drawn.querySelector(".problem");
    problem.textContent = problemOf(card);
    problem.hidden = false;
    const other = drawn.querySelector("pre");
    other.textContent = card.text || "";
    other.hidden = !card.text;
    return drawn;
  }
  const warnings = drawn.querySelector(".warnings");
  warnings.hidden = !card.warnings;
  for (const code of card.warnings || []) {
    warnings.append(Object.assign(document.createElement("li"), { textContent: words.warnings[code] || code }));
  }
  for (const [name, field] of Object.entries(kind.fields)) {
    if (field.display !== "hidden") drawn.querySelector("dl").append(drawField(field, card.result[name], noteOn(card, name)));
  }
  return drawn;
}

/** By the name of the check, the field that it is told at. */
const CHECKED = { checkDigit: "idNumber", birthDateMatches: "birthDate", genderMatches: "gender", startBeforeEnd: "validityPeriod", luhn: "cardNumber" };

function noteOn(card, name) {
  for (const [check, passed] of Object.entries(card.checks || {})) {
    if (passed === false && CHECKED[check] === name) return words.checks[check];
  }
  return (card.doubtful || []).includes(name) ? text("doubtful") : "";
}

function masked(value) {
  const hidden = Math.max(0, value.length - SHOWN_AT_END);
  return value.slice(0, hidden).replace(/\S/gu, "•") + value.slice(hidden);
}

function drawField(field, value, note) {
  const drawn = at("field").content.cloneNode(true);
  const told = value === null || value === "" ? text("absent") : value;
  const shown = drawn.querySelector(".value"), toggle = drawn.querySelector(".show"), copy = drawn.querySelector(".copy");
  drawn.querySelector("dt").textContent = field.label;
  drawn.querySelector(".note").textContent = note;
  let isMasked = field.display === "masked" && told === value;
  toggle.hidden = !isMasked;
  const update = () => {
    shown.textContent = isMasked ? masked(told) : told;
    toggle.textContent = text(isMasked ? "show" : "hide");
  };
  toggle.addEventListener("click", () => { isMasked = !isMasked; update(); });
  update();
  copy.hidden = told !== value;
  copy.textContent = text("copy");
  copy.addEventListener("click", async () => {
    await navigator.clipboard.writeText(value);
    copy.textContent = text("copied");
    setTimeout(() => { copy.textContent = text("copy"); }, COPIED_MILLISECONDS);
  });
  return drawn;
}

/** Whether all cards were read without doubt, so that the camera may stop. */
function isSound(answer) {
  const cards = answer.cards || [];
  return cards.length > 0 && cards.every((card) => card.result && !card.doubtful &&
    !Object.values(card.checks).includes(false));
}

async function startCamera() {
  try {
    stream = await navigator.mediaDevices.getUserMedia(CAMERA);
  } catch {
    say(text("denied"));
    return;
  }
  const camera = at("camera");
  camera.srcObject = stream;
  camera.hidden = false;
  at("picture").hidden = at("hint").hidden = true;
  at("cards").replaceChildren();
  at("live").textContent = text("stop");
  say(text("aim"));
  await camera.play();
  await watch(camera, stream);
}

/** Reads frame after frame until two in a row say the same. */
async function watch(camera, watched) {
  let before = "";
  while (stream === watched) {
    const frame = await frameOf(camera);
    const answer = await read(frame.blob);
    if (stream !== watched) return;
    if (!answer) {
      await new Promise((resolve) => setTimeout(resolve, 1000));
      continue;
    }
    outline(answer.cards || [], frame.width, frame.height);
    if (answer.report) say(problemOf(answer));
    const now = JSON.stringify((answer.cards || []).map((card) => card.result));
    if (isSound(answer) && now === before) {
      stopCamera();
      const picture = at("picture");
      picture.src = URL.createObjectURL(frame.blob);
      picture.hidden = false;
      show(answer, frame.width, frame.height);
    }
    before = now;
  }
}

async function frameOf(camera) {
  const scale = Math.min(1, FRAME_WIDTH / camera.videoWidth);
  const canvas = document.createElement("canvas");
  canvas.width = Math.round(camera.videoWidth * scale);
  canvas.height = Math.round(camera.videoHeight * scale);
  canvas.getContext("2d").drawImage(camera, 0, 0, canvas.width, canvas.height);
  const blob = await new Promise((resolve) => canvas.toBlob(resolve, "image/jpeg", 0.9));
  return { blob, width: canvas.width, height: canvas.height };
}

function stopCamera() {
  if (stream) for (const track of stream.getTracks()) track.stop();
  stream = null;
  at("camera").hidden = true;
  at("camera").srcObject = null;
  at("live").textContent = text("live");
}

at("language").addEventListener("click", () => speak(language === "zh" ? "en" : "zh"));
at("live").addEventListener("click", () => {
  if (!stream) { startCamera(); return; }
  stopCamera();
  at("outlines").replaceChildren();
  at("hint").hidden = false;
});
for (const id of ["file", "photo"]) {
  at(id).addEventListener("change", (event) => {
    if (event.target.files.length) pick(event.target.files[0]);
    event.target.value = "";
  });
}
at("access").addEventListener("submit", (event) => {
  event.preventDefault();
  sessionStorage.setItem("token", at("token").value);
  if (picked) pick(picked);
});
const stage = at("stage");
document.addEventListener("dragover", (event) => { event.preventDefault(); stage.classList.add("over"); });
document.addEventListener("dragleave", () => stage.classList.remove("over"));
document.addEventListener("drop", (event) => {
  event.preventDefault();
  stage.classList.remove("over");
  if (event.dataTransfer.files.length) pick(event.dataTransfer.files[0]);
});
document.addEventListener("paste", (event) => {
  if (event.clipboardData.files.length) pick(event.clipboardData.files[0]);
});
speak(language);
