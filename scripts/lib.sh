# shellcheck shell=bash
# Functions that the scripts share: messages, packages, the build and the summary of the tests.
# To be sourced by a script that has set strict mode and changed to the project's folder.

# shellcheck disable=SC2034 # The callers use the lists.

# Compiler, build tools and Qt. Without the fonts, text on a minimal system is shown as boxes.
build_packages=(cmake g++ ninja-build qt6-base-dev qt6-svg-dev
    ca-certificates fonts-dejavu-core fonts-noto-color-emoji)
# An X server without a screen, a window manager, and a tool that sends input.
screen_packages=(openbox xdotool xvfb)
# What the tests use: IRC servers, a tray, buses, a Wayland compositor, a tool for certificates,
# validators for the desktop's files, and a platform theme with dark colours.
test_packages=(appstream at-spi2-core dbus-daemon desktop-file-utils faketime grim inspircd ngircd openssl
    qt6-wayland qt6ct sway trayer wl-clipboard)
# What packing needs in addition.
package_packages=(dpkg-dev file gzip)

say() {
    printf '==> %s\n' "$*"
}

die() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# Prints those of the packages that are not installed, one per line.
missing_packages() {
    local package
    for package in "$@"; do
        if [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
            printf '%s\n' "$package"
        fi
    done
}

# Without apt-get nothing is installed; the tools may have been installed by hand.
check_tools() {
    local tool missing=()
    say "This system has no apt-get, so nothing is installed. Under Debian the packages are: $*"
    for tool in cmake c++ ninja; do
        command -v "$tool" >/dev/null || missing+=("$tool")
    done
    if ((${#missing[@]} > 0)); then
        die "not found: ${missing[*]}. Install your system's equivalents of those packages."
    fi
}

# Installs those of the packages that are missing.
ensure_packages() {
    if ! command -v apt-get >/dev/null; then
        check_tools "$@"
        return
    fi
    local missing as_root=()
    mapfile -t missing < <(missing_packages "$@")
    if ((${#missing[@]} == 0)); then
        return
    fi
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            die "root is needed to install ${missing[*]}, and there is no sudo. As root, call: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing what is missing: ${missing[*]}"
    # Waits for the lock: a new machine often installs upgrades in the background.
    local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300)
    "${apt[@]}" update </dev/null || die "apt-get update failed."
    "${apt[@]}" install -y --no-install-recommends "${missing[@]}" </dev/null ||
        die "apt-get could not install ${missing[*]}."
    # Debian starts these servers when it installs them; the tests start their own.
    local server
    for server in inspircd ngircd; do
        if [[ " ${missing[*]} " == *" $server "* ]]; then
            "${as_root[@]}" invoke-rc.d "$server" stop || true
            "${as_root[@]}" update-rc.d "$server" disable || true
        fi
    done
}

# build PRESET FOLDER TARGET [CMAKE OPTION...]: configures and builds.
build() {
    local preset=$1 folder=$2 target=$3
    shift 3
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=ccache
        # Clones in different folders share results.
        export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$PWD} CCACHE_NOHASHDIR=${CCACHE_NOHASHDIR:-1}
        # Precompiled headers need these.
        export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}
    fi
    say "Configuring $folder"
    cmake --preset "$preset" -B "$folder" "$@" --log-level=NOTICE || die "CMake could not configure $folder."
    say "Building $folder"
    cmake --build "$folder" --target "$target" || die "the build in $folder failed; see above."
}

# Returns whether there is a display for the program.
has_display() {
    if [[ -n ${WAYLAND_DISPLAY:-} ]]; then
        return 0
    fi
    case ${DISPLAY:-} in
    '') return 1 ;;
    # The variable may be stale: a display of this machine has a socket.
    :*)
        local number=${DISPLAY#:}
        local socket=/tmp/.X11-unix/X${number%%.*}
        [[ -S $socket ]] || grep -q "$socket\$" /proc/net/unix 2>/dev/null
        ;;
    *) return 0 ;;
    esac
}

# Prints the number of processors available to this process.
processors() {
    nproc 2>/dev/null || echo 2
}

# Reads a log of CTest and prints "N passed, N failed", summed over the programs that ran, and
# ", N skipped" if any were. A program that failed without counting a failure, for example because it
# crashed or reached the time limit, counts as one failed.
count_tests() {
    awk '
        function close_program() {
            if (open && (!sound || !totals) && !failures)
                failed++
        }
        /^[0-9]+\/[0-9]+ Testing: / { close_program(); open = 1; sound = totals = failures = 0 }
        /^Totals: [0-9]+ passed, [0-9]+ failed/ {
            totals = 1
            passed += $2
            failed += $4
            failures += $4
            skipped += $6
        }
        /^Test Passed\.$/ { sound = 1 }
        END {
            close_program()
            printf "%d passed, %d failed", passed, failed
            if (skipped)
                printf ", %d skipped", skipped
            printf "\n"
        }' "$1"
}

# Reads a log of CTest and prints its ten slowest programs with their seconds, slowest first.
slowest_tests() {
    awk '
        /^[0-9]+\/[0-9]+ Testing: / { name = $NF }
        /^Test time = / { printf "%7.1f s  %s\n", $4, name }' "$1" | sort -rn | head -n 10
}
