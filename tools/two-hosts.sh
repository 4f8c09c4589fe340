#!/bin/sh
# Spreads a tree of scenes over two hosts with GNU parallel: tools/two-hosts.sh [PROGRAM]
# The hosts are network namespaces with an ssh server each, joined by a virtual cable; nothing leaves the
# machine. The tree has scenes with the same name in several folders. The result must be the same as on one
# machine. Needs root. The default PROGRAM is build/release/host/3ds2mcx.
set -eu
cd "$(dirname "$0")/.."
program=$(realpath "${1:-build/release/host/3ds2mcx}")
[ -x "$program" ] || { echo "two-hosts.sh: no program $program" >&2; exit 2; }
[ "$(id -u)" -eq 0 ] || { echo "two-hosts.sh: wants root" >&2; exit 2; }
tools/setup.sh hosts

work=$(mktemp -d)
a=mc3ds-a-$$
b=mc3ds-b-$$
clean()
{
    for host in a b; do
        [ ! -f "$work/$host.pid" ] || kill "$(cat "$work/$host.pid")" || true
    done
    ip netns delete $a 2>/dev/null || true # also deletes the cable
    ip netns delete $b 2>/dev/null || true
    rm -rf "$work"
}
trap clean EXIT
trap 'exit 1' HUP INT TERM

fail()
{
    echo "two-hosts.sh: $*" >&2
    exit 1
}

ip netns add $a
ip netns add $b
ip -n $a link add cable type veth peer name cable netns $b
ip -n $a address add 192.0.2.1/24 dev cable
ip -n $b address add 192.0.2.2/24 dev cable
for host in $a $b; do
    ip -n "$host" link set lo up
    ip -n "$host" link set cable up
done

ssh-keygen -q -t ed25519 -N '' -f "$work/user_key"
mkdir -p /run/sshd
for host in a b; do
    address=192.0.2.1
    [ $host = a ] || address=192.0.2.2
    ssh-keygen -q -t ed25519 -N '' -f "$work/host_key_$host"
    echo "$address $(cut -d ' ' -f 1,2 "$work/host_key_$host.pub")" >>"$work/known_hosts"
    cat >"$work/sshd_$host" <<END
ListenAddress $address
HostKey $work/host_key_$host
PidFile $work/$host.pid
AuthorizedKeysFile $work/user_key.pub
AuthenticationMethods publickey
PermitRootLogin prohibit-password
StrictModes no
UsePAM no
END
    ip netns exec "mc3ds-$host-$$" /usr/sbin/sshd -f "$work/sshd_$host" -E "$work/log_$host"
done
cat >"$work/ssh" <<END
#!/bin/sh
exec ssh -F none -i $work/user_key -o IdentitiesOnly=yes -o UserKnownHostsFile=$work/known_hosts \\
    -o StrictHostKeyChecking=yes -o BatchMode=yes -o ConnectTimeout=10 "\$@"
END
chmod +x "$work/ssh"

# The servers may need a moment to start.
for address in 192.0.2.1 192.0.2.2; do
    for try in 1 2 3 4 5 6 7 8 9 10; do
        ip netns exec $a "$work/ssh" $address true 2>"$work/ssh_log" && break
        [ "$try" -lt 10 ] || { cat "$work/ssh_log" "$work"/log_*; fail "no answer from $address"; }
        sleep 0.5
    done
done

tree=$work/tree
for folder in north south north/deep 'with blank'; do
    mkdir -p "$tree/archive/$folder"
    cp samples/orrery.3DS "$tree/archive/$folder/orrery.3ds"
    cp samples/windmill.3DS "$tree/archive/$folder/windmill.3DS"
    cp samples/windmill.3DS "$tree/archive/$folder/ship.3DS"
done
cp samples/orrery.3DS "$tree/archive/south/ship.3DS"
cp samples/orrery.vue "$tree/archive/south/ship.vue"
cd "$tree"

scenes=$(find archive -iname '*.3ds' | wc -l)

# check NAME: each scene had a job, both hosts had jobs, and the result is the same as on one machine.
check()
{
    [ "$(($(wc -l <"$work/$1.log") - 1))" -eq "$scenes" ] || fail "$1: not every scene had its job"
    [ "$(tail -n +2 "$work/$1.log" | cut -f 2 | sort -u | wc -l)" -eq 2 ] || fail "$1: one host did it all"
    [ "$(find models -name '*.mcx' | wc -l)" -eq "$scenes" ] || fail "$1: files are missing"
    diff -r "$work/one" models || fail "$1: the result is not that of one machine"
    tail -n +2 "$work/$1.log" | cut -f 2 | sort | uniq -c
    echo "two-hosts.sh: $1: $scenes scenes, the result is that of one machine"
    rm -rf models
}

# spread NAME OPTION...: runs parallel on host a, with jobs for a and b.
spread()
{
    name=$1
    shift
    find archive -iname '*.3ds' | PARALLEL_SSH="$work/ssh" PARALLEL_HOME="$work/parallel" \
        timeout 120 ip netns exec $a parallel --will-cite -j 2 -S 192.0.2.1,192.0.2.2 \
        --joblog "$work/$name.log" "$@" || fail "$name: parallel ends with $?"
    check "$name"
}

# one OPTION...: converts the tree on one machine, to compare with
one()
{
    rm -rf "$work/one"
    timeout 120 "$program" -q --recursive --output-dir models/archive "$@" archive || fail "one machine failed"
    mv models "$work/one"
}

mkdir "$work/parallel"
one --animation
spread shared-folder --workdir . "$program" -q --animation --output-dir 'models/{//}' {}
one
spread copied-files --workdir ... --transferfile {} --return 'models/{.}.mcx' --cleanup \
    "$program" -q --output-dir 'models/{//}' {}
