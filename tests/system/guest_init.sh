#!/bin/sh
# The first process of a guest. LAB, NAME and ADDRESS come from the kernel's command line. After the
# setup each line on the console names a folder with a file `command`; it is run, and what it prints
# and its exit status are left beside it.
export PATH=/usr/sbin:/usr/bin:/sbin:/bin

mount -t proc proc /proc
mount -t sysfs sys /sys
[ -d /dev/shm ] || mkdir /dev/shm
for folder in /run /var/log /var/tmp /dev/shm /tmp; do mount -t tmpfs tmpfs $folder; done
mkdir -p "$LAB"
mount -t hostfs none "$LAB" -o "$LAB"

# The program asks for 1 GiB, of which it touches what it needs; the guest has less.
echo 1 > /proc/sys/vm/overcommit_memory

printf '#!/bin/sh\nexec /sbin/modprobe -d %s "$@"\n' "$LAB/modules" > /run/modprobe
chmod +x /run/modprobe
echo /run/modprobe > /proc/sys/kernel/modprobe

hostname "$NAME"
ip link set lo up
ip address add "$ADDRESS/16" dev vec0
ip link set vec0 up

run_job() {
  sh "$1/command" < /dev/null > "$1/printed" 2>&1
  echo $? > "$1/status.part"
  mv "$1/status.part" "$1/status"
}

echo ready
while read -r job; do
  run_job "$job" &
done
