#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs a script as root in a guest that has simulated radios, without KVM and without a disk image:
#
#     tests/machine/radio/guest.sh WORK KERNEL SCRIPT [ARGUMENT]...
#
# WORK is a folder for what this run leaves, KERNEL that of an unpacked linux-image package. The guest sees this machine's
# files read-only where they stand here, below a memory file system that takes what is written; of /tmp and /run it sees
# only the folder BUILD, should that be there. SCRIPT's folder is /guest/script, what is written to the folder RESULTS
# comes out as WORK/results, and /guest/written shows which files have changed. The guest's console comes out here, where
# lines may be cut; the exit code is SCRIPT's, or 125 when the guest had none to tell. SECONDS_MAX limits it.
set -euo pipefail

work=$(realpath -m "$1")
kernel=$(realpath "$2")
script=$(realpath "$3")
arguments=("${@:4}")
build=$(realpath -m "${BUILD:-$work}")
release=$(basename "$(echo "$kernel"/lib/modules/*)")
mkdir -p "$work/results"
cd "$work"

# The first file system: busybox, and the modules that the second one needs, in their order.
rm -rf first results/code
mkdir -p first/{bin,modules,proc,sys,dev,root}
cp "$(command -v busybox)" first/bin/busybox
modules=()
for module in virtio_pci 9pnet_virtio 9p overlay; do
    while read -r _ path _; do
        [[ -f first/modules/${path##*/} ]] || { cp "$path" first/modules/; modules+=("${path##*/}"); }
    done < <(modprobe -d "$kernel" -S "$release" --show-depends "$module" | grep '^insmod')
done
# As the first process, and with switch_root instead of chroot: there the kernel looks for the modprobe that it loads
# ciphers with.
cat >first/init <<END
#!/bin/busybox sh
/bin/busybox --install -s /bin
mount -t proc proc /proc
mount -t sysfs sys /sys
mount -t devtmpfs dev /dev
for module in ${modules[*]}; do insmod /modules/\$module; done
mkdir -p /low /mem
mount -t 9p -o trans=virtio,version=9p2000.L,ro,msize=262144,cache=loose host /low
mount -t tmpfs mem /mem
mkdir /mem/up /mem/work
mount -t overlay -o lowerdir=/low,upperdir=/mem/up,workdir=/mem/work over /root
for folder in run tmp var/tmp; do mount -t tmpfs tmp /root/\$folder; done
mount -t proc proc /root/proc
mount -t sysfs sys /root/sys
mount -t debugfs debug /root/sys/kernel/debug
mount -t devtmpfs dev /root/dev
mkdir -p /root/dev/pts /root/lib/modules
mount -t devpts pts /root/dev/pts
mount -t tmpfs mods /root/lib/modules
mkdir /root/lib/modules/$release
mount --bind /low$kernel/lib/modules/$release /root/lib/modules/$release
mkdir -p /root/guest/script /root/guest/results /root/guest/written
mount --bind /low${script%/*} /root/guest/script
mkdir -p /root$build
mount --bind /low$build /root$build
mount -t 9p -o trans=virtio,version=9p2000.L,cache=none results /root/guest/results
mount --bind /mem/up /root/guest/written
cat >/root/guest/start <<'OVER'
export PATH=/usr/sbin:/usr/bin:/sbin:/bin RESULTS=/guest/results LC_ALL=C.UTF-8 HOME=/root
cd /guest
/bin/bash /guest/script/$(printf '%q ' "${script##*/}" "${arguments[@]}")
echo \$? >results/code
sync
echo o >/proc/sysrq-trigger
sleep 60
OVER
exec switch_root /root /bin/bash /guest/start
END
chmod +x first/init
(cd first && find . | cpio --quiet -o -H newc | gzip -1) >first.gz

timeout --foreground "${SECONDS_MAX:-600}" qemu-system-x86_64 -M q35 -accel "${ACCEL:-tcg,thread=multi}" -cpu max \
    -m 1024 -smp 2 -nographic -no-reboot -nic none -kernel "$kernel/boot/vmlinuz-$release" -initrd first.gz \
    -append "console=ttyS0 loglevel=3 panic=-1 sysrq_always_enabled random.trust_cpu=on mitigations=off" \
    -virtfs local,path=/,mount_tag=host,security_model=none,readonly=on,multidevs=remap \
    -virtfs "local,path=$work/results,mount_tag=results,security_model=none,multidevs=remap" \
    </dev/null | tee console.log || true
[[ -s results/code ]] || exit 125
exit "$(<results/code)"
