# Sourced by run and test, after packages.sh: configures and builds a preset.
# A terminal gets a line that moves, a log plain steps, and both every warning and error.

# plain_steps: turns a builder's status lines ("12% Compiling ...") into one line for every tenth of the way.
plain_steps() {
    local line percent told=0
    while IFS= read -r line; do
        if [[ $line =~ ^\ *([0-9]+)%\  ]]; then
            percent=${BASH_REMATCH[1]}
            ((percent / 10 > told / 10)) && echo "Building: $percent %" && told=$percent
        elif [[ -n $line && $line != "ninja: "* && $line != "["* ]]; then
            echo "$line"
        fi
    done
    return 0
}

# need_build_folder: everything is built below this folder, so it must be this account's.
need_build_folder() {
    mkdir -p build 2> /dev/null && [[ -z $(find build -maxdepth 1 ! -writable -print -quit) ]] && return 0
    cat >&2 <<END
Everything is built in the folder "build" in here, which this account may not write:

    $PWD/build

Copy the sources into a folder of your own, or remove a "build" that another account made, and start $0 there.
END
    return 1
}

# configure_preset NAME: only when it was never done, or otherwise; the builder sees changed lists itself.
configure_preset() {
    local ninja=build/$1/build.ninja log=build/$1-configure.log
    [[ -e $ninja && ! CMakePresets.json -nt $ninja ]] && return 0
    echo "Configuring."
    mkdir -p build
    unpack_tools
    cmake --preset "$1" > "$log" 2>&1 || { cat "$log" >&2; return 1; }
    touch "$ninja"
    rm -f "$log"
}

# build_preset NAME
build_preset() {
    configure_preset "$1"
    local build=(cmake --build --preset "$1" -j "$(nproc)")
    if [[ -t 1 ]]; then
        NINJA_STATUS="Building: %p  " "${build[@]}"
    else
        NINJA_STATUS="%p " "${build[@]}" 2>&1 | plain_steps
    fi
}
