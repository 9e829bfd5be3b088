#!/bin/bash
# Stations that come to one file through shares of this machine's own: an NFS export and a Samba share,
# each mounted twice without a common memory, as on two machines. What all count adds up and the file is
# sound. A folder mounted twice shows that the test itself can be passed.
#
#   shares.sh <jet_station> <valtrino-mdb>
#
# It takes the right to mount and what serves and mounts the shares; where something is missing, that kind
# of share is skipped, and said. All of it is in namespaces of its own, and gone at the end.
set -euo pipefail
station=$1
tool=$2

if [ -z "${VALTRINO_SHARES:-}" ]; then
    if unshare -m -n true 2> /dev/null; then
        VALTRINO_SHARES=1 exec unshare -m -n "$0" "$@"
    fi
    echo "skipped: only who may mount can try shares"
    exit 77
fi
ip link set lo up 2> /dev/null || true
place=$(mktemp -d)
server=
end() {
    umount "$place/a" "$place/b" 2> /dev/null || true
    [ -z "$server" ] || $server
    umount "$place/served" 2> /dev/null || true
    rm -r "$place"
}
trap end EXIT
mkdir "$place/served" "$place/a" "$place/b"
chmod 777 "$place/served"

# missing <command or file system>...: says what the machine lacks, if anything.
missing() {
    for need in "$@"; do
        case $need in
            fs:*)
                modprobe -q "${need#fs:}" 2> /dev/null || true
                grep -qw "${need#fs:}" /proc/filesystems || { echo "file system ${need#fs:}"; return; }
                ;;
            *) command -v "$need" > /dev/null || { echo "$need"; return; } ;;
        esac
    done
}

serve_folder() { :; }
needs_folder=(mount)
mount_folder() { mount --bind "$place/served" "$1"; }

needs_nfs=(exportfs rpc.nfsd rpc.mountd mount.nfs4 fs:nfsd fs:nfs4)
serve_nfs() {
    mount -t tmpfs -o mode=777 tmpfs "$place/served"
    mountpoint -q /proc/fs/nfsd || mount -t nfsd nfsd /proc/fs/nfsd
    rpc.mountd --no-nfs-version 3
    exportfs -o rw,insecure,no_root_squash,fsid=7711 "127.0.0.1:$place/served"
    rpc.nfsd --no-nfs-version 3 4
    server=end_nfs
}
end_nfs() {
    rpc.nfsd 0
    exportfs -u "127.0.0.1:$place/served"
    server=
}
mount_nfs() { mount -t nfs4 -o vers=4.2,nosharecache "127.0.0.1:$place/served" "$1"; }

needs_samba=(smbd smbpasswd mount.cifs fs:cifs)
serve_samba() {
    mkdir "$place/samba"
    {
        echo "[global]"
        for folder in "lock" "state" "cache" "pid" "private" "ncalrpc"; do
            directory=$([ $folder = private ] || [ $folder = ncalrpc ] && echo dir || echo directory)
            echo "$folder $directory = $place/samba"
        done
        printf '%s\n' "smb ports = 4455" "interfaces = lo" "map to guest = bad user" "log file = $place/samba/log" \
            "[loja]" "path = $place/served" "guest ok = yes" "read only = no" "force user = root"
    } > "$place/samba/conf"
    smbd --configfile="$place/samba/conf" --daemon
    server=end_samba
}
end_samba() {
    kill "$(cat "$place"/samba/smbd.pid)"
    server=
}
mount_samba() { mount -t cifs -o guest,port=4455,vers=3.1.1,nosharesock,cache=strict //127.0.0.1/loja "$1"; }

tried=0
for kind in folder nfs samba; do
    needs="needs_$kind[@]"
    lacks=$(missing "${!needs}")
    if [ -n "$lacks" ]; then
        echo "skipped: $kind (the machine has no $lacks)"
        continue
    fi
    if ! { "serve_$kind" && "mount_$kind" "$place/a" && "mount_$kind" "$place/b"; } 2> "$place/why"; then
        echo "skipped: $kind ($(tail -n 1 "$place/why"))"
        umount "$place/a" "$place/b" 2> /dev/null || true
        [ -z "$server" ] || $server
        continue
    fi
    for version in 3 4; do
        file=loja$version.mdb
        "$station" make "$place/a/$file" $version
        counts=()
        for way in a b a b; do
            "$station" count "$place/$way/$file" 40 &
            counts+=($!)
        done
        for count in "${counts[@]}"; do
            wait "$count" || { echo "$kind: a station failed"; exit 1; }
        done
        for way in a b; do
            value=$("$station" value "$place/$way/$file")
            [ "$value" = 160 ] || { echo "$kind: $value instead of 160 through $way"; exit 1; }
        done
        "$tool" check "$place/b/$file" > "$place/check" || { cat "$place/check"; exit 1; }
        [ -z "$(find "$place/a/" -name '*.ldb' -o -name '*-journal*')" ] || { ls "$place/a"; exit 1; }
    done
    umount "$place/a" "$place/b"
    [ -z "$server" ] || $server
    echo "passed: $kind"
    [ "$kind" = folder ] || tried=$((tried + 1))
done
[ $tried -gt 0 ] || { echo "skipped: no share could be tried"; exit 77; }
