#!/usr/bin/env bash
# demo-kernel.sh MFA_HOST OUT: the agent fed live from the kernel of a network namespace in
# which a static multicast routing daemon (smcroute) runs. It makes two namespaces: the
# router, whose et1, et2 and et3 are veth pairs to the second one, where the hosts live
# (h1 sends). It starts the daemon in the router and `mfa-host live` on it, then adds,
# changes and removes (S,G) and (*,G) routes with the daemon's control command, and stops
# and starts the daemon, while mfa-host prints what reaches the data plane. Everything it
# made goes at the end, also when it fails or is interrupted. Run by scripts/demo.sh kernel.
set -euo pipefail
host=$1
out=$2
if [ "$(id -u)" -ne 0 ]; then
  echo "demo.sh kernel: the demo makes network namespaces and needs root" >&2
  exit 2
fi
router=vekdemo-$$
hosts=vekdemo-hosts-$$
work=$(mktemp -d /tmp/vekdemo.XXXXXX)
daemon_pid=
live_pid=

cleanup() {
  [ -n "$live_pid" ] && kill "$live_pid" 2> /dev/null && wait "$live_pid" 2> /dev/null
  [ -n "$daemon_pid" ] && kill "$daemon_pid" 2> /dev/null && wait "$daemon_pid" 2> /dev/null
  ip netns del "$router" 2> /dev/null || true
  ip netns del "$hosts" 2> /dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

say() { printf '\n== %s\n' "$*"; }
ctl() {
  echo "\$ smcroutectl $*"
  timeout 10 ip netns exec "$router" smcroutectl -u "$work/smcroute.sock" "$@"
}
pause() { sleep "${DEMO_PAUSE:-1}"; }

start_daemon() {
  rm -f "$work/smcroute.sock"
  ip netns exec "$router" timeout 300 smcrouted -n -f "$work/smcroute.conf" \
    -u "$work/smcroute.sock" -P "$work/smcroute.pid" -l err &
  daemon_pid=$!
  for _ in $(seq 100); do [ -S "$work/smcroute.sock" ] && return 0; sleep 0.05; done
  echo "demo.sh kernel: smcrouted did not start" >&2
  exit 1
}

stop_daemon() {
  kill "$daemon_pid"
  wait "$daemon_pid" 2> /dev/null || true
  daemon_pid=
}

say "namespaces $router (router: et1 et2 et3) and $hosts (h1 h2 h3, one at the end of each)"
ip netns add "$router"
ip netns add "$hosts"
for i in 1 2 3; do
  ip -n "$router" link add "et$i" type veth peer name "h$i" netns "$hosts"
  ip -n "$router" addr add "10.0.$i.1/24" dev "et$i"
  ip -n "$router" addr add "2001:db8:$i::1/64" dev "et$i" nodad
  ip -n "$hosts" addr add "10.0.$i.2/24" dev "h$i"
  ip -n "$hosts" addr add "2001:db8:$i::2/64" dev "h$i" nodad
  ip -n "$router" link set "et$i" up
  ip -n "$hosts" link set "h$i" up
done
ip -n "$router" link set lo up
ip -n "$hosts" link set lo up
ip -n "$hosts" route add 224.0.0.0/4 dev h1
: > "$work/smcroute.conf"
start_daemon

say "a route the daemon holds before mfa-host starts"
ctl add et1 10.0.1.2 239.1.1.1 et2

say "mfa-host live --netns $router"
"$host" live --netns "$router" --log "$out/commands.jsonl" --dump "$out/dump.json" \
  --dot "$out/graph.dot" --trace "$out/trace.log" > >(tee "$out/live.txt") 2>&1 &
live_pid=$!
for _ in $(seq 300); do grep -q '^following' "$out/live.txt" 2> /dev/null && break; sleep 0.05; done
pause

say "an (S,G) route with two outgoing interfaces, and an IPv6 one"
ctl add et1 10.0.1.2 239.1.1.2 et2 et3
ctl add et1 2001:db8:1::2 ff3e::1:2 et3
pause

say "a (*,G) route: the daemon keeps it and installs (S,G) in the kernel when a source sends"
ctl add et1 239.1.1.3 et3
echo "\$ (h1 sends to 239.1.1.3)"
ip netns exec "$hosts" bash -c 'echo hello > /dev/udp/239.1.1.3/5000'
pause

say "the first route gets one more outgoing interface"
ctl add et1 10.0.1.2 239.1.1.1 et3
pause

say "the second (S,G) route and the (*,G) route go"
ctl remove et1 10.0.1.2 239.1.1.2
ctl remove et1 239.1.1.3
pause

say "the daemon stops (its routes leave the kernel) and starts again with one route configured"
echo "mroute from et1 source 10.0.1.2 group 239.1.1.9 to et2 et3" > "$work/smcroute.conf"
stop_daemon
pause
start_daemon
pause

say "what the kernel holds now"
ip -n "$router" mroute show
ip -6 -n "$router" mroute show

say "mfa-host stops and writes what the data plane holds"
kill -INT "$live_pid"
wait "$live_pid" || true
live_pid=
if command -v dot > /dev/null; then
  dot -Tsvg "$out/graph.dot" > "$out/graph.svg"
  echo "drawing: $out/graph.svg"
fi
