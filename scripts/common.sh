# Sourced by ./run, ./test and the scripts beside this one: packages, configuring, building.
# shellcheck shell=bash

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root" || exit 1

say() { printf '\033[1m%s\033[0m\n' "$*" >&2; }

# as_root COMMAND... - runs it as root, which may ask for a password.
as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "For '$*' become root or install sudo." >&2
        return 77
    fi
}

# need_packages PACKAGE... - installs those that are missing; on a system without apt it names them and stops.
need_packages() {
    local missing=() package
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        local stamp=build/packages-by-hand
        [ -e "$stamp" ] && return
        echo "This system has no apt. Install what Debian calls" >&2
        echo "    $*" >&2
        echo "by its own means, then 'mkdir -p build && touch $stamp' and call this again." >&2
        exit 69
    fi
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    say "Installing ${missing[*]}"
    local install=(env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends
        -o Dpkg::Use-Pty=0 "${missing[@]}")
    as_root "${install[@]}" >/dev/null 2>&1 || { as_root apt-get update -qq && as_root "${install[@]}" >/dev/null; }
    rm -f build/*/build.ninja # what was configured without them looks around again
}

# build PRESET [cmake --build option...] - configures where that was not done yet, and builds.
build() {
    local preset=$1 log
    shift
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "Configuring $preset"
        log=$(cmake --preset "$preset" 2>&1) || { echo "$log" >&2; exit 1; }
    fi
    cmake --build --preset "$preset" "$@" >&2
}

# has_packages PACKAGE... - whether this system offers all of these, installed or not.
has_packages() {
    command -v apt-cache >/dev/null && [ "$(LC_ALL=C apt-cache policy "$@" | grep -c 'Candidate: [^(]')" = $# ]
}

# need_npm - has what packaging/web/package-lock.json names in build/npm.
need_npm() {
    cmp -s packaging/web/package-lock.json build/npm/installed && return
    command -v npm >/dev/null || need_packages npm
    say "Installing the npm packages"
    mkdir -p build/npm
    cp packaging/web/package*.json build/npm
    npm ci --prefix build/npm --ignore-scripts --no-audit --no-fund --loglevel=error >&2
    cp packaging/web/package-lock.json build/npm/installed
}

packages_build=(cmake g++ ninja-build libcli11-dev libgcrypt20-dev libsystemd-dev nlohmann-json3-dev)
packages_test=(fish fiu-utils libfiu-dev libgtest-dev pkgconf python3 python3-pexpect zsh)
packages_all=(clang clang-format clang-tidy clang-tools libclang-rt-14-dev python3)
packages_window=(fonts-crosextra-carlito fonts-liberation qt6-base-dev qt6-svg-dev)
packages_window_test=(appstream at-spi2-core dbus-daemon desktop-file-utils gir1.2-atspi-2.0 openbox python3-gi
    python3-xlib
    shared-mime-info xvfb)
packages_vm=(busybox-static cpio dbus-daemon kmod python3 python3-gi qemu-system-x86 udev xz-utils)
packages_debian=(dpkg-dev gzip lintian)
packages_windows=(fonts-crosextra-carlito fonts-liberation fonts-wine g++-mingw-w64-x86-64-posix googletest icoutils
    libgcrypt-mingw-w64-dev librsvg2-bin nsis openssl osslsigncode python3-xlib wine wine64)
packages_web=(binaryen clang-19 dpkg-dev libc++-19-dev-wasm32 libc++abi-19-dev-wasm32 libclang-rt-19-dev-wasm32
    librsvg2-bin lld-19 llvm-19 nlohmann-json3-dev python3 wasi-libc)
packages_web_test=(chromium clang-tidy-19 googletest openbox python3-xlib xvfb)
packages_mutate=(ccache lld python3)
packages_coverage=(gcovr)
packages_bench=(libbenchmark-dev libdeflate-dev libzstd-dev zlib1g-dev util-linux)
