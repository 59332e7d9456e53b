# shellcheck shell=bash
# Roots of a Debian suite, for the scripts that build or try something out in one. To be sourced.

# make_root SUITE FOLDER: a bare system from the archive that apt uses here, in a folder that is not there
# yet; one that is there is taken for such a root. A reason and status 1 where none can be made.
make_root() {
    [ ! -e "$2" ] || return 0
    [[ $1 =~ ^[a-z]+$ ]] || {
        echo "there is no suite $1" >&2
        return 1
    }
    command -v debootstrap >/dev/null ||
        apt-get install --yes --no-install-recommends debootstrap || return 1
    local archive log new
    # shellcheck disable=SC2016 # for apt
    archive=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | head -n 1)
    [ -n "$archive" ] || {
        echo "apt knows no archive here" >&2
        return 1
    }
    mkdir -p "$(dirname "$2")" && new=$(mktemp --directory "$2.XXXXXX") && log=$(mktemp) || return 1
    debootstrap --variant=minbase "$1" "$new" "$archive" sid >"$log" 2>&1 || {
        tail -n 5 "$log" >&2
        rm -rf --one-file-system "$log" "$new"
        echo "no root of $1 can be made from $archive" >&2
        return 1
    }
    rm "$log"
    # By the same way, and as strict about a mirror that is behind, as this machine's own apt.
    apt-config dump --format '%f "%v";%n' Acquire::http Acquire::https \
        Acquire::Check-Valid-Until Acquire::Check-Date >"$new/etc/apt/apt.conf.d/90archive" || return 1
    chmod 755 "$new" && mv --no-target-directory "$new" "$2"
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
