// @ts-check
// Keeps the page's own files, so that it opens without a network. Packaging fills in the files and a version, which
// changes with any of them; a new version takes over when no page of the old one is open any more.

/** @type {string[]} */
const files = [/* files */];
const version = "vento-";

const worker = /** @type {any} */ (self);

worker.addEventListener("install", (/** @type {any} */ event) => {
    event.waitUntil(caches.open(version).then((cache) => cache.addAll(["./", ...files])));
});

worker.addEventListener("activate", (/** @type {any} */ event) => {
    const drop = async () => {
        for (const name of await caches.keys()) {
            if (name.startsWith("vento-") && name !== version) await caches.delete(name);
        }
    };
    event.waitUntil(drop());
});

// "?simulate" is the same page.
worker.addEventListener("fetch", (/** @type {any} */ event) => {
    if (event.request.method !== "GET") return;
    const answer = async () =>
        (await caches.match(event.request, { ignoreSearch: true })) ?? fetch(event.request);
    event.respondWith(answer());
});
