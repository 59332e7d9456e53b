# shellcheck shell=bash
# Roots of a Debian suite, for the scripts that build or try something out in one. To be sourced.

# make_root SUITE FOLDER: a bare system from the archive that apt uses here. A reason and status 1 where
# none can be made.
make_root() {
    [ ! -e "$2/made" ] || return 0
    command -v debootstrap >/dev/null || apt-get install --yes --no-install-recommends debootstrap
    local archive log
    # shellcheck disable=SC2016 # for apt
    archive=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | head -n 1)
    [ -n "$archive" ] || {
        echo "apt knows no archive here" >&2
        return 1
    }
    rm -rf --one-file-system "${2:?}"
    mkdir -p "$2"
    log=$(mktemp)
    debootstrap --variant=minbase "$1" "$2" "$archive" sid >"$log" 2>&1 || {
        tail -n 5 "$log" >&2
        rm -rf --one-file-system "$log" "${2:?}"
        echo "no root of $1 can be made from $archive" >&2
        return 1
    }
    rm "$log"
    # By the same way, and as strict about a mirror that is behind, as this machine's own apt.
    apt-config dump --format '%f "%v";%n' Acquire::http Acquire::https \
        Acquire::Check-Valid-Until Acquire::Check-Date >"$2/etc/apt/apt.conf.d/90archive"
    touch "$2/made"
}

# mount_devices ROOT: processes, harmless devices and names of hosts. In a mount namespace of its own, whose
# end undoes it.
mount_devices() {
    local device
    cp /etc/resolv.conf "$1/etc/"
    mount -t proc proc "$1/proc"
    mount -t tmpfs -o mode=755 tmpfs "$1/dev"
    for device in null zero full random urandom tty; do
        touch "$1/dev/$device"
        mount --bind "/dev/$device" "$1/dev/$device"
    done
    mkdir "$1/dev/pts"
    mkdir -m 1777 "$1/dev/shm"
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$1/dev/pts"
    ln -s pts/ptmx "$1/dev/ptmx"
    ln -s /proc/self/fd "$1/dev/fd"
}
