# Sourced by run and test: installs what packages.txt names and this machine lacks.
# Quick when nothing is missing; says what it does otherwise.
install_packages() {
    local missing=() package
    while read -r package; do
        [[ -z $package || $package == \#* ]] && continue
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ||
            missing+=("$package")
    done < packages.txt
    ((${#missing[@]})) || return 0
    local sudo=()
    ((EUID == 0)) || sudo=(sudo)
    echo "Installing ${#missing[@]} missing packages: ${missing[*]}"
    "${sudo[@]}" apt-get update -qq
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" > /dev/null
}
