# Sourced by run, test and the checks: installs what packages.txt names and this machine lacks.

# wanted_packages SECTION...: the lines of these sections, one a line, comments left out.
wanted_packages() {
    local line section=""
    while read -r line; do
        case $line in
            ""|\#*) ;;
            \[*\]) section=${line//[\[\]]/} ;;
            *) [[ " $* " == *" $section "* ]] && echo "$line" ;;
        esac
    done < packages.txt
}

# known_package NAME: this distribution has a package of that name.
known_package() { apt-cache show --no-all-versions "$1" > /dev/null 2>&1; }

# one_of NAME...: the first that this distribution has. Without any lists of packages to look into: Debian 12's name,
# which stands last, or the newer one.
one_of() {
    local name
    for name in "$@"; do
        known_package "$name" && echo "$name" && return
    done
    grep -qs '^VERSION_ID="\?12\b' /etc/os-release && echo "${*: -1}" || echo "$1"
}

# missing_packages SECTION...: what is not installed; of alternatives the first that the distribution has.
missing_packages() {
    local installed line name names
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2> /dev/null | sed -n 's/^installed //p')
    while read -r line; do
        IFS='| ' read -ra names <<< "$line"
        name=${names[0]}
        if ((${#names[@]} > 1)) && ! grep -qxF "$name" <<< "$installed"; then
            name=$(one_of "${names[@]}")
        fi
        grep -qxF "$name" <<< "$installed" || echo "$name"
    done < <(wanted_packages "$@")
}

# ask_administrator PACKAGE...: what an account says that may not install.
ask_administrator() {
    cat >&2 <<END
These packages are missing, and this account may not install them. Ask an administrator for this one command:

    apt-get update && apt-get install --no-install-recommends $*

Then start $0 again.
END
}

# apt_progress LOG: turns what apt reports into one moving line on a terminal, into plain steps in a log, and keeps
# the rest in LOG.
apt_progress() {
    local kind package percent rest text told=-10
    while IFS=: read -r kind package percent rest; do
        percent=${percent%%.*}
        case $kind in
            dlstatus) text="Fetching packages: $percent %" ;;
            pmstatus) text="Installing packages: $percent %  ${package:0:40}" ;;
            *) echo "$kind $package $percent $rest" >> "$1"; continue ;;
        esac
        if [[ -t 1 ]]; then
            printf '\r\e[K%s' "$text"
        elif [[ $kind == pmstatus ]] && ((percent >= told + 10)); then
            told=$((percent / 10 * 10))
            echo "Installing packages: $told %"
        fi
    done
    [[ ! -t 1 ]] || printf '\r\e[K'
}

# apt_install AS... -- PACKAGE...: what apt itself says is shown only when it fails.
apt_install() {
    local as=() log status=0
    while [[ $1 != -- ]]; do as+=("$1"); shift; done
    shift
    log=$(mktemp)
    "${as[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends --fix-broken \
        -o DPkg::Lock::Timeout=300 -o APT::Status-Fd=1 "$@" 2>&1 | apt_progress "$log" || status=$?
    ((status == 0)) || cat "$log" >&2
    rm -f "$log"
    return "$status"
}

# finish_interrupted AS...: what an installation that was broken off left half done; apt refuses to go on from there.
finish_interrupted() {
    [[ -n $(ls -A /var/lib/dpkg/updates 2> /dev/null) ]] || return 0
    echo "Finishing an installation that was interrupted."
    "$@" env DEBIAN_FRONTEND=noninteractive dpkg --configure -a > /dev/null 2>&1 || true # what it lacks comes now
}

# may_install: this account is root or becomes it by sudo, asking for a password only at a terminal.
may_install() {
    ((EUID == 0)) && return 0
    command -v sudo > /dev/null || return 1
    sudo -n true 2> /dev/null || { [[ -t 0 ]] && sudo -v; }
}

# unpack_tool PACKAGE TOOL: into build/tools, with the tool's plain name in its folder bin.
unpack_tool() {
    mkdir -p build/tools/bin &&
        cd build/tools &&
        apt-get download -qq "$1" &&
        dpkg-deb -x "$1"_*.deb "$1" &&
        rm "$1"_*.deb &&
        cd bin && ln -sf ../"$1"/usr/bin/"$2"* "$2"
}

# unpack_tools: takes the tools of the section [unpacked] that this machine lacks out of their packages.
unpack_tools() {
    local package tool told
    while read -r package tool; do
        [[ -e build/tools/bin/$tool ]] || command -v "$tool" > /dev/null && continue
        if ! told=$(unpack_tool "$package" "$tool" 2>&1); then
            echo "$told" >&2
            ask_administrator "${package%-*}"
            return 1
        fi
    done < <(wanted_packages unpacked)
}

# install_packages SECTION...: quick when nothing is missing; says what it does otherwise.
install_packages() {
    local missing as=() stamp="build/packages-${*: -1}"
    [[ $stamp -nt packages.txt && $stamp -nt /var/lib/dpkg/status ]] && return 0
    mkdir -p build
    mapfile -t missing < <(missing_packages "$@")
    ((${#missing[@]})) || { touch "$stamp"; return 0; }
    if ! may_install; then
        ask_administrator "${missing[@]}"
        return 1
    fi
    ((EUID == 0)) || as=(sudo)
    echo "Installing ${#missing[@]} missing packages: ${missing[*]}"
    finish_interrupted "${as[@]}"
    "${as[@]}" apt-get update -qq > /dev/null
    mapfile -t missing < <(missing_packages "$@")
    apt_install "${as[@]}" -- "${missing[@]}"
    touch "$stamp"
}
