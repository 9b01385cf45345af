// @ts-check
// What the module asks of a browser as of an operating system: devices, time, files, language. It touches no page, so
// that it also runs without one.

const REPORT = 64; // bytes
const WAIT = 1000; // milliseconds for a report to come or go
const SHORT = 20; // milliseconds: a timer is no good for less
const LOCK = 'VENTO transmitter';

/**
 * @typedef {{size: number, bytes: Uint8Array | null, handle?: any}} StoredFile bytes is null where they were not read
 * @typedef {{device: any, number: number, queue: Uint8Array[], wake: (() => void) | undefined}} Interface
 */

/** Whether the tab is behind others, where timers come once a second or once a minute. */
const unseen = () => typeof document !== 'undefined' && document.hidden;

/** The end of the event loop's present turn. Unlike a timer's, its message is never delayed. */
export function nextTurn() {
    return new Promise((/** @type {(value?: any) => void} */ resume) => {
        const { port1, port2 } = new MessageChannel();
        port1.onmessage = () => {
            port1.close();
            resume();
        };
        port2.postMessage(0);
    });
}

/**
 * Waits for so long, or until `done` says so.
 * @param {number} milliseconds
 * @param {() => boolean} done
 */
async function pause(milliseconds, done = () => false) {
    const end = performance.now() + milliseconds;
    for (let left = milliseconds; left > 0 && !done(); left = end - performance.now()) {
        if (left < SHORT || unseen()) await nextTurn();
        else await new Promise((resume) => setTimeout(resume, Math.min(left, SHORT)));
    }
}

/** The files that the page was given, by their paths. @param {(path: string, handle: any) => void} onDelete */
function fileStore(onDelete) {
    /** @type {Map<string, StoredFile>} */
    const files = new Map();
    return {
        /** @param {string} path */
        size: (path) => files.get(path)?.size ?? -1,
        /** @param {string} path */
        bytes: (path) => files.get(path)?.bytes ?? null,
        /** @param {string} path @param {Uint8Array} bytes */
        write: (path, bytes) => void files.set(path, { ...files.get(path), size: bytes.length, bytes }),
        /** @param {string} path */
        remove: (path) => {
            const file = files.get(path);
            if (!file) return;
            files.delete(path);
            onDelete(path, file.handle);
        },
        /** @param {string} name @param {Uint8Array} bytes @param {{size?: number, handle?: any}} more */
        put: (name, bytes, { size = bytes.length, handle } = {}) => {
            files.set(name, { size, bytes: size === bytes.length ? bytes : null, handle });
            return name;
        },
    };
}

/** The screen stays on while somebody wants that; a tab that comes back has to ask again. */
function screenLight() {
    let wanted = 0;
    /** @type {any} */
    let lock;
    const ask = async () => {
        if (!wanted || unseen() || lock) return;
        try {
            lock = await /** @type {any} */ (navigator).wakeLock?.request('screen');
        } catch {} // refused, as on a low battery
        lock?.addEventListener('release', () => (lock = undefined));
        if (!wanted) void lock?.release();
    };
    if (typeof document !== 'undefined') document.addEventListener('visibilitychange', () => void ask());
    return (/** @type {number} */ on) => {
        wanted += on ? 1 : -1;
        if (wanted) void ask();
        else void lock?.release();
    };
}

/**
 * One page at a time works with a transmitter of the same ids: the browser tells no two such devices apart.
 * @param {() => void} onChange
 */
function pageLocks(onChange) {
    /** @type {Map<string, {end: () => void, ended: Promise<unknown>}>} */
    const held = new Map();
    /** @type {Set<string>} */
    const others = new Set();
    const nameOf = (/** @type {any} */ device) => `${LOCK} ${device.vendorId}:${device.productId}`;
    const note = (/** @type {string} */ name) => {
        if (others.has(name)) return;
        others.add(name);
        void navigator.locks.request(name, () => void others.delete(name)).then(onChange);
    };
    return {
        /** Another page had it when it was last wanted, and has not let go since. @param {any} device */
        isElsewhere: (device) => others.has(nameOf(device)),
        /** @param {any} device @returns {Promise<boolean>} whether it is ours */
        take: (device) => {
            const name = nameOf(device);
            if (held.has(name) || !navigator.locks) return Promise.resolve(true);
            return new Promise((answer) => {
                const hold = (/** @type {any} */ lock) => {
                    if (!lock) {
                        note(name);
                        return void answer(false);
                    }
                    return new Promise((/** @type {(value?: any) => void} */ end) => {
                        held.set(name, { end, ended });
                        answer(true);
                    });
                };
                const ended = navigator.locks.request(name, { ifAvailable: true }, hold).catch(() => answer(true)); // none here
            });
        },
        release: () => {
            const ending = [...held.values()];
            held.clear();
            for (const each of ending) each.end();
            return Promise.all(ending.map((each) => each.ended));
        },
    };
}

/** The devices that were granted to the page and are plugged in. @param {() => void} onChange */
function hidDevices(onChange) {
    const hid = typeof navigator === 'undefined' ? undefined : /** @type {any} */ (navigator).hid;
    const locks = pageLocks(onChange);
    /** @type {Interface[]} */
    let present = [];
    let latest = 0;
    /** @type {Promise<unknown>} */
    let closing = Promise.resolve();

    /** @param {any} device */
    const add = (device) => {
        if (present.some((each) => each.device === device)) return;
        /** @type {Interface} */
        const added = { device, number: ++latest, queue: [], wake: undefined };
        device.oninputreport = (/** @type {any} */ { reportId, data }) => {
            if (reportId !== 0) return;
            added.queue.push(new Uint8Array(data.buffer.slice(data.byteOffset, data.byteOffset + data.byteLength)));
            added.wake?.();
        };
        present.push(added);
    };
    const list = async () => {
        for (const device of await hid.getDevices()) add(device);
        onChange();
    };
    hid?.addEventListener('connect', (/** @type {any} */ { device }) => {
        add(device);
        onChange();
    });
    hid?.addEventListener('disconnect', (/** @type {any} */ { device }) => {
        for (const gone of present.filter((each) => each.device === device)) gone.wake?.();
        present = present.filter((each) => each.device !== device);
        onChange();
    });
    const ready = hid ? list().catch(() => undefined) : Promise.resolve();

    /** @param {number} number */
    const find = (number) => present.find((each) => each.number === number);

    /** @param {any[]} reports */
    const longest = (reports) =>
        Math.max(0, ...reports.map((report) => report.items.reduce((/** @type {number} */ bits, /** @type {any} */ item) => bits + item.reportSize * item.reportCount, 0) / 8));

    return {
        ready,
        at: (/** @type {number} */ place) => present[place]?.number ?? 0,
        identity: (/** @type {number} */ number) => {
            const device = find(number)?.device;
            return device ? (device.vendorId << 16) | device.productId : 0;
        },
        isElsewhere: (/** @type {number} */ number) => {
            const device = find(number)?.device;
            return Number(!!device && locks.isElsewhere(device));
        },
        isSystemInput: (/** @type {number} */ number) => {
            const pointerOrKeyboard = (/** @type {any} */ { usagePage, usage }) => usagePage === 1 && [1, 2, 6, 7].includes(usage);
            return Number(find(number)?.device.collections.every(pointerOrKeyboard) ?? false);
        },
        lengths: (/** @type {number} */ number) => {
            const collections = find(number)?.device.collections ?? [];
            const length = (/** @type {string} */ kind) => longest(collections.flatMap((/** @type {any} */ each) => each[kind]));
            return (length('inputReports') << 16) | length('outputReports');
        },
        /** @param {Uint16Array} vendorIds */
        request: async (vendorIds) => {
            try {
                const chosen = await hid.requestDevice({ filters: [...vendorIds].map((vendorId) => ({ vendorId })) });
                chosen.forEach(add);
                return Number(chosen.length > 0);
            } catch {
                return 0; // not asked by a gesture, or forbidden by a policy
            }
        },
        /** @param {number} number @returns {Promise<number>} as script.h has it */
        open: async (number) => {
            await closing;
            const wanted = find(number);
            if (!wanted) return 3;
            if (!(await locks.take(wanted.device))) return 2;
            try {
                if (!wanted.device.opened) await wanted.device.open();
            } catch (error) {
                return /** @type {any} */ (error).name === 'NotAllowedError' ? 1 : 3;
            }
            wanted.queue.length = 0;
            return 0;
        },
        /** @param {number} number @param {Uint8Array} report */
        write: async (number, report) => {
            const device = find(number)?.device;
            if (!device) return 0;
            let sent = false;
            let over = false;
            const sending = device.sendReport(0, report).then(
                () => (sent = over = true),
                () => (over = true),
            );
            await Promise.race([sending, pause(WAIT, () => over)]);
            return Number(sent);
        },
        /** @param {number} number @returns {Promise<Uint8Array | undefined>} */
        read: async (number) => {
            const from = find(number);
            if (!from) return undefined;
            if (from.queue.length === 0) {
                let over = false;
                const woken = new Promise((/** @type {(value?: any) => void} */ wake) => {
                    from.wake = () => {
                        over = true;
                        wake();
                    };
                });
                await Promise.race([woken, pause(WAIT, () => over)]);
                over = true;
                from.wake = undefined;
            }
            return from.queue.shift();
        },
        release: () => {
            const open = present.filter((each) => each.device.opened);
            closing = Promise.all(open.map((each) => each.device.close().catch(() => undefined))).then(locks.release);
        },
    };
}

/**
 * The imports that the module wants of `platform`. `memory` gives its memory; `language` the page's, as a tag;
 * `onDelete` is told of a file that is gone. Without `suspending` a call that would wait is over at once, time
 * goes on by as much as it would have taken, and there are no devices.
 * @param {{memory: () => WebAssembly.Memory, language: () => string, onDelete?: (path: string, handle: any) => void,
 *     suspending?: boolean}} options
 */
export function platformImports({ memory, language, onDelete = () => undefined, suspending = true }) {
    let onChange = () => {};
    const files = fileStore(onDelete);
    const hid = hidDevices(() => onChange());
    let skipped = 0;

    const bytesAt = (/** @type {number} */ start, /** @type {number} */ size) => new Uint8Array(memory().buffer, start, size);
    const pathAt = (/** @type {number} */ start, /** @type {number} */ size) => new TextDecoder().decode(bytesAt(start, size));
    /** @param {(...args: number[]) => any} wait @param {(...args: number[]) => any} instead */
    const waits = (wait, instead) => (suspending ? new /** @type {any} */ (WebAssembly).Suspending(wait) : instead);
    const never = () => 0;

    const imports = {
        now: () => performance.now() + skipped,
        sleep: waits(
            (milliseconds) => pause(milliseconds),
            (milliseconds) => void (skipped += milliseconds),
        ),
        turn: waits(nextTurn, never),
        italian: () => Number(/^it/i.test(language())),
        awake: screenLight(),
        hid_request: waits((start, count) => hid.request(new Uint16Array(memory().buffer.slice(start, start + 2 * count))), never),
        hid_at: suspending ? hid.at : never,
        hid_identity: hid.identity,
        hid_is_elsewhere: hid.isElsewhere,
        hid_is_system_input: hid.isSystemInput,
        hid_lengths: hid.lengths,
        hid_open: waits(hid.open, never),
        hid_write: waits((number, start) => hid.write(number, bytesAt(start, REPORT).slice()), never),
        hid_read: waits(async (number, start) => {
            const report = await hid.read(number);
            if (!report) return 0;
            bytesAt(start, REPORT).set(report.subarray(0, REPORT));
            return report.length;
        }, never),
        hid_release: hid.release,
        file_size: (/** @type {number} */ start, /** @type {number} */ size) => files.size(pathAt(start, size)),
        file_read: (/** @type {number} */ start, /** @type {number} */ size, /** @type {number} */ to) => {
            const bytes = files.bytes(pathAt(start, size));
            if (bytes) bytesAt(to, bytes.length).set(bytes);
            return Number(!!bytes);
        },
        file_write: (/** @type {number} */ start, /** @type {number} */ size, /** @type {number} */ from, /** @type {number} */ count) =>
            files.write(pathAt(start, size), bytesAt(from, count).slice()),
        file_delete: (/** @type {number} */ start, /** @type {number} */ size) => files.remove(pathAt(start, size)),
    };
    return {
        imports: { platform: imports },
        putFile: files.put,
        /** @param {string} path */
        getFile: (path) => files.bytes(path) ?? undefined,
        /** `callback` is called whenever a device comes or goes. @param {() => void} callback */
        onDevicesChanged: (callback) => {
            onChange = callback;
        },
        /** The devices that were granted before are known from then on. */
        ready: hid.ready,
        nextTurn,
    };
}
