# Sourced by the build scripts.
#
# A full disk shows as a compile that fails without a word: ccache keeps the
# compiler's messages in files of its own, and when it cannot write them the
# message is lost along with the output. The GCC build folder takes about
# 1.8 GiB and the checked one 1.4, much of it precompiled headers (GCC's
# are about 160 MiB each).

# free_mib DIR prints how many MiB are free on the disk that holds DIR.
free_mib() {
    df -Pm "$1" | awk 'NR == 2 { print $4 }'
}

# build_in DIR [ARGS...] builds DIR with cmake --build (ARGS go along); when
# that fails and the disk is nearly full, the likely cause of a failure with
# no message, it says so.
build_in() {
    local dir=$1 status=0 free
    shift
    cmake --build "$dir" "$@" || status=$?
    if ((status != 0)); then
        free=$(free_mib "$dir")
        if ((free < 1024)); then
            echo "$(basename "$0"): only $free MiB free on the disk of $dir; a build folder needs about 2 GiB, and a compiler that cannot write under ccache fails without a message" >&2
        fi
    fi
    return "$status"
}
