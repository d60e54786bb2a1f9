const events = new EventSource("/api/events");
const list = document.getElementById("cameras");

function show(camera) {
    const line = document.getElementById(camera.mac) ?? list.appendChild(document.createElement("li"));
    line.id = camera.mac;
    line.textContent = `${camera.mac} ${camera.address} ${camera.name}`;
}

events.addEventListener("snapshot", (event) => JSON.parse(event.data).cameras.forEach(show));
events.addEventListener("camera", (event) => show(JSON.parse(event.data)));
