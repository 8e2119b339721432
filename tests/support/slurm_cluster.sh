# A Slurm cluster of this machine alone, on the loopback, for tests. To be sourced:
#
#   start_cluster DIRECTORY   everything of it lies there; sets SLURM_CONF
#   stop_cluster              ends what start_cluster started

cluster_pids=()

# Prints a port of the loopback on which nobody listens.
free_port() {
  local port
  while true; do
    port=$((20000 + RANDOM % 10000))
    (: <"/dev/tcp/127.0.0.1/$port") 2>/dev/null || { echo "$port"; return; }
  done
}

# Runs a daemon that stays in the foreground.
start_daemon() {
  "$@" >>"$cluster/daemons.log" 2>&1 </dev/null &
  cluster_pids+=("$!")
}

# Waits for a command to go through, 30 seconds at most.
await() {
  for _ in $(seq 300); do
    if "$@" >/dev/null 2>&1; then return; fi
    sleep 0.1
  done
  echo "no success: $*" >&2
  tail -n 20 "$cluster"/*.log >&2
  return 1
}

is_idle() { sinfo --noheader --format=%t | grep -qx idle; }

write_slurm_conf() {
  local user port_control port_node
  user=$(id -un)
  port_control=$(free_port)
  port_node=$(free_port)
  while [ "$port_node" = "$port_control" ]; do port_node=$(free_port); done
  cat >"$cluster/slurm.conf" <<END
ClusterName=test
SlurmctldHost=$(hostname -s)(127.0.0.1)
SlurmctldPort=$port_control
SlurmdPort=$port_node
SlurmUser=$user
SlurmdUser=$user
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$cluster/munge.socket
StateSaveLocation=$cluster/state
SlurmdSpoolDir=$cluster/spool
SlurmctldPidFile=$cluster/slurmctld.pid
SlurmdPidFile=$cluster/slurmd.pid
SlurmctldLogFile=$cluster/slurmctld.log
SlurmdLogFile=$cluster/slurmd.log
# No control groups: they need rights that a container doesn't have.
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SwitchType=switch/none
MpiDefault=none
MailProg=/bin/true
ReturnToService=2
SchedulerParameters=batch_sched_delay=0,sched_interval=2,bf_interval=1
NodeName=node NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 Port=$port_node CPUs=2 State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES State=UP
END
}

start_cluster() {
  cluster=$1
  chmod 711 "$cluster"  # what munge wants of its socket's folder
  mkdir "$cluster/state" "$cluster/spool"
  head -c 1024 /dev/urandom >"$cluster/munge.key"
  chmod 400 "$cluster/munge.key"
  start_daemon /usr/sbin/munged --foreground --key-file="$cluster/munge.key" --socket="$cluster/munge.socket" \
    --pid-file="$cluster/munged.pid" --log-file="$cluster/munged.log" --seed-file="$cluster/munged.seed"
  await test -S "$cluster/munge.socket"
  write_slurm_conf
  export SLURM_CONF=$cluster/slurm.conf
  start_daemon /usr/sbin/slurmctld -D
  start_daemon /usr/sbin/slurmd -D -N node
  await is_idle
}

stop_cluster() {
  local pid
  scancel --user="$(id -un)" >/dev/null 2>&1 || true
  for pid in "${cluster_pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  for _ in $(seq 100); do
    [ -n "$(jobs -rp)" ] || break
    sleep 0.1
  done
  for pid in "${cluster_pids[@]}"; do kill -9 "$pid" 2>/dev/null || true; done
  wait
}
