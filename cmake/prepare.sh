# Sourced by ./demo and ./check: installs the Debian packages named as arguments that are missing, quietly. Without
# root it prints the one line that a person has to run, and ends.
install_packages() {
    local package missing=()
    for package in "$@"; do
        # Also true for a package that another one provides under the same name.
        dpkg-query -W -f '${Status}\n' "$package" 2>/dev/null | grep -q '^install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    if [ "$(id -u)" -ne 0 ]; then
        echo "Packages are missing. Please run:"
        echo "  sudo apt-get install --no-install-recommends ${missing[*]}"
        exit 2
    fi
    echo "installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    local log
    log=$(mktemp)
    if ! { apt-get update -qq && apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        cat "$log" >&2
        echo "The packages could not be installed; see above." >&2
        exit 2
    fi
    rm -f "$log"
}

# Configures and builds a preset, showing the compiler's words only when it fails.
build_preset() {
    local preset=$1 log
    shift
    log=$(mktemp)
    echo "building ($preset)"
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" "$@"; } >"$log" 2>&1; then
        cat "$log" >&2
        echo "The build failed; see above." >&2
        exit 2
    fi
    rm -f "$log"
}

# Qt asks for a folder of its own for the session and grumbles on machines without a login.
export XDG_RUNTIME_DIR="${XDG_RUNTIME_DIR:-$PWD/build/runtime}"
mkdir -p -m 700 "$XDG_RUNTIME_DIR"
