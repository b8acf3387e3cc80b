# A Slurm of its own for scripts/cluster-demo: on the loopback interface, without systemd, with keys, state, sockets and
# logs in the folder $work. Every daemon belongs to the user who runs the script. Uses start, eventually and fail.
# shellcheck shell=bash disable=SC2154 # The script sets work, started and jobs.

writeConfiguration() {
    local ports host
    read -ra ports < <(python3 -c 'import socket
sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(2)]
print(*(s.getsockname()[1] for s in sockets))')
    host=$(uname -n)
    cat >"$work/slurm.conf" <<END
ClusterName=demo
SlurmctldHost=${host%%.*}(127.0.0.1)
SlurmctldPort=${ports[0]}
SlurmdPort=${ports[1]}
# Listen at 127.0.0.1 alone, not at all addresses of the machine.
CommunicationParameters=NoInAddrAny,NoCtldInAddrAny
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
AuthInfo=socket=$work/munge.socket
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
# By default Slurm follows processes by control groups, which containers seldom may change.
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
# Tasks share the node, a processor each. By default every task has the node alone.
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
# Start a task after 0.1 s (100,000 microseconds). By default a task waits for up to 3 s.
SchedulerParameters=batch_sched_delay=0,sched_min_interval=100000
# Seconds between SIGTERM and SIGKILL.
KillWait=2
# Without a program, slurmctld complains. No job asks for mail.
MailProg=/bin/true
# The name and the processors of this machine, as slurmd finds them.
$(slurmd -C | head -n 1) NodeAddr=127.0.0.1
PartitionName=demo Nodes=ALL Default=YES
END
}

nodeIsIdle() { sinfo --noheader --format=%T | grep -qx idle; }

startSlurm() {
    # The settings of a Slurm that the script itself may run under.
    unset "${!SLURM_@}" "${!SBATCH_@}" "${!SQUEUE_@}" "${!SCANCEL_@}" "${!SINFO_@}"
    export SLURM_CONF=$work/slurm.conf
    mkdir "$work/state" "$work/spool"
    writeConfiguration
    mungekey --create --keyfile="$work/munge.key"
    # Forced, because munged insists on a socket that all users reach. This one is for one user.
    start munged --foreground --force --socket="$work/munge.socket" --key-file="$work/munge.key" \
        --pid-file="$work/munged.pid" --seed-file="$work/munge.seed" >"$work/munged.log" 2>&1
    eventually 10 test -S "$work/munge.socket" || fail "munged does not start"
    start slurmctld -D >"$work/slurmctld.log" 2>&1
    start slurmd -D >"$work/slurmd.log" 2>&1
    eventually 30 nodeIsIdle || fail "Slurm does not start"
    sinfo --noheader --format='Slurm is up: node %N, %c processors, %T'
}

requireDaemons() {
    local pid
    for pid in "${started[@]}"; do
        kill -0 "$pid" 2>/dev/null || fail "a daemon of Slurm has ended"
    done
}

# slurmstepd, which starts and watches a task, keeps a socket as long as it runs: NODE_JOB.STEP.
noTaskRuns() { [ -z "$(compgen -G "$work/spool/*_*.*[0-9]")" ]; }

endTasks() {
    if ! noTaskRuns; then
        timeout 5 scancel --me
        eventually 15 noTaskRuns
    fi
}

# Every process that this Slurm starts has the path of the configuration in its environment.
pidsOfSlurm() { grep -lsxzF "SLURM_CONF=$work/slurm.conf" /proc/[0-9]*/environ | cut -d/ -f3; }

# Prints the states of all tasks of $jobs whenever one has changed, and returns when all have ended.
watchJobs() {
    local now shown='' since=$SECONDS
    while :; do
        now=$(squeue --array --noheader --states=all --jobs="$jobs" --format='%j %K %T' | sort -k 2) ||
            fail "slurmctld does not answer"
        requireDaemons
        if [ "$now" != "$shown" ]; then
            printf '%4d s  ' $((SECONDS - since))
            sed 's/ N\/A//' <<<"$now" | tr '[:upper:]' '[:lower:]' | paste -sd, | sed 's/,/, /g'
        fi
        shown=$now
        grep -Eq 'PENDING|CONFIGURING|RUNNING|COMPLETING' <<<"$now" || return 0
        sleep 0.2
    done
}
