# Sourced by ./demo, ./check and the longer proofs.

# timed PART COMMAND...: runs the command and tells how long that part took, unless it took no time to speak of.
timed() {
    local part=$1 begin=$SECONDS status=0
    shift
    "$@" || status=$?
    [ "$SECONDS" -eq "$begin" ] || echo "$part took $((SECONDS - begin)) s"
    return "$status"
}

# without_words MESSAGE COMMAND...: shows the command's words only when it fails, and ends then with the message.
without_words() {
    local message=$1 log
    shift
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        echo "$message; see above." >&2
        exit 2
    fi
    rm -f "$log"
}

# Installs the Debian packages named as arguments that are missing, quietly. Without root it prints the one line that a
# person has to run, and ends.
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
    timed "installing" without_words "The packages could not be installed" fetch_and_install "${missing[@]}"
}

# The lists of packages are fetched only when those at hand do not lead to the packages.
fetch_and_install() {
    local install=(env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@")
    "${install[@]}" || { apt-get update -qq && "${install[@]}"; }
}

# Configures and builds a preset; further arguments go to the build.
build_preset() {
    local preset=$1
    shift
    echo "building ($preset)"
    timed "configuring" without_words "The build cannot be configured" cmake --preset "$preset"
    timed "building" without_words "The build failed" cmake --build --preset "$preset" "$@"
}

# Qt asks for a folder of its own for the session and grumbles on machines without a login.
export XDG_RUNTIME_DIR="${XDG_RUNTIME_DIR:-$PWD/build/runtime}"
mkdir -p -m 700 "$XDG_RUNTIME_DIR"
