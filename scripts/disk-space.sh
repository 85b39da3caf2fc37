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

# say_if_disk_short DIR, after a failed build in DIR: says so when the disk
# is nearly full, the likely cause of a failure with no message.
say_if_disk_short() {
    local free
    free=$(free_mib "$1")
    if ((free < 1024)); then
        echo "$(basename "$0"): only $free MiB free on the disk of $1; a build folder needs about 2 GiB, and a compiler that cannot write under ccache fails without a message" >&2
    fi
}
