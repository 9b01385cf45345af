# Sourced by the scripts beside this one: a Wine of the project's own, apart from the user's.
# shellcheck shell=bash

wine_folder=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
export WINEPREFIX=${VENTO_WINEPREFIX:-$(cd "$wine_folder/../.." && pwd)/build/wine}
export WINEDEBUG=-all
# With winedbg a program that crashes waits for a debugger's answer, or ends with status 0; with winemenubuilder one that
# installs itself shows up in the menus of the desktop outside.
export WINEDLLOVERRIDES="mscoree=;mshtml=;winedbg.exe=;winemenubuilder.exe="

# make_prefix - makes the prefix unless it is there. The fonts are the free ones of the same widths; the HID bus is to
# take its devices from the kernel.
make_prefix() {
    [ ! -e "$WINEPREFIX/ready" ] || return 0
    mkdir -p "$WINEPREFIX"
    (
        flock 9
        [ ! -e "$WINEPREFIX/ready" ] || exit 0
        wineboot -i >"$WINEPREFIX/make.log" 2>&1 9>&- </dev/null
        wine regedit /S "Z:$wine_folder/prefix.reg" >>"$WINEPREFIX/make.log" 2>&1 9>&- </dev/null
        wineserver -w 9>&-  # what was set is written when the server ends
        touch "$WINEPREFIX/ready"
    ) 9>"$WINEPREFIX.lock"
}

# keep_server - has a server ready for the programs to come, for a minute after the last of them; without it each
# program takes seconds to start. It is an error, and does no harm, if there is one.
keep_server() {
    wineserver -p60 </dev/null >/dev/null 2>&1 || :
}
