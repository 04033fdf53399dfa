# A Debian system that nothing was done to, for the scripts that try things in one. Sourced.
# `system` is its folder, which each suite has for itself.

# The archive that this machine itself takes its packages from.
archive() {
    apt-get indextargets --format '$(REPO_URI)' 'Identifier: Packages' | grep -v security | head -n 1
}

# makeCleanSystem SUITE: an earlier one goes.
makeCleanSystem() {
    system="$root/build/clean-$1"
    local log="$system.log"
    leaveSystem
    rm -rf --one-file-system "$system"
    mkdir -p "$root/build"
    debootstrap --variant=minbase "$1" "$system" "$(archive)" >"$log" 2>&1 || {
        tail -n 15 "$log" >&2
        fail "there is no clean system of $1; build/clean-$1.log has all of the output."
    }
    cp /etc/resolv.conf "$system/etc/resolv.conf"
    cp /etc/apt/apt.conf.d/*proxy* "$system/etc/apt/apt.conf.d/" 2>/dev/null || true
    # Nothing in there is worth waiting for the disk.
    printf 'force-unsafe-io\n' >"$system/etc/dpkg/dpkg.cfg.d/unsafe-io"
    # No service is to start in there.
    printf '#!/bin/sh\nexit 101\n' >"$system/usr/sbin/policy-rc.d"
    chmod +x "$system/usr/sbin/policy-rc.d"
    trap leaveSystem EXIT
    mount -t proc proc "$system/proc"
    mount -t tmpfs tmpfs "$system/dev/shm"
    inSystem apt-get -q update
}

leaveSystem() {
    umount "$system/proc" "$system/dev/shm" 2>/dev/null || true
}

# inSystem COMMAND...
inSystem() {
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
        chroot "$system" "$@"
}
