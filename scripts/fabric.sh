# The ribkit command at work: the lab, and the same as processes.

sample=examples/fabrics/small.toml
ribkit=build/release/cli/ribkit

# The sample fabric is the one that a lab without FABRIC runs; what is FABRIC and what an option the command knows best.
lab() {
    need "the lab" "${lab_packages[@]}"
    build release $(without_tests) -- ribkit_command
    export RIBKIT_FABRIC=${RIBKIT_FABRIC-$PWD/$sample}
    local program=$PWD/$ribkit
    trap - EXIT
    cd "$from" # whose files the arguments name
    exec "$program" lab "$@"
}

# Starts a server on loopback, on a port of its own, which ends with this script; sets server_url.
start_server() {
    scratch=$(mktemp -d)
    PATH=$PATH:/usr/sbin begin nats-server -a 127.0.0.1 -p -1 --ports_file_dir "$scratch" >"$scratch/server" 2>&1
    until server_url=$(grep -o 'nats://[0-9.:]*' "$scratch"/*.ports 2>/dev/null); do
        kill -0 "$begun" 2>/dev/null || { cat "$scratch/server" >&2; exit 1; }
        sleep 0.1
    done
}

# Until the RIB has told a module all that was there when it came.
await_module() {
    local try
    for try in {1..300}; do
        finish "$ribkit" status --bus "$server_url" >"$scratch/status"
        ! grep -q "^  module *$1 active" "$scratch/status" || return 0
        sleep 0.1
    done
    echo "run: module $1 is not served" >&2
    exit 1
}

# Clients and modules are started before the RIB, and all of them before anybody knows of the others.
nats() {
    need "the fabric over a server" "${nats_packages[@]}"
    local vsan number modules=(left right) clients=() rib server_url
    build release $(without_tests) -- ribkit_command
    start_server
    echo "run: a server, two clients, two modules and a RIB meet at $server_url"
    for vsan in 1 20; do
        begin "$ribkit" client --bus "$server_url" --vsan "$vsan" "$sample" >"$scratch/client-$vsan" 2>&1
        clients+=("$begun")
    done
    for number in 1 2; do
        begin "$ribkit" module "${modules[number - 1]}" --number "$number" --ports 16 --bus "$server_url" \
            >"$scratch/module-$number" 2>&1
    done
    begin "$ribkit" rib --bus "$server_url" --tables none "$sample"
    rib=$begun
    wait "${clients[@]}" || true
    for vsan in 1 20; do
        printf '\nrun: ribkit client --vsan %s %s\n' "$vsan" "$sample"
        cat "$scratch/client-$vsan"
    done
    printf '\nrun: ribkit routes\n'
    finish "$ribkit" routes --bus "$server_url"
    for number in 1 2; do
        printf '\nrun: ribkit module %s --number %s; what it has:\n' "${modules[number - 1]}" "$number"
        cat "$scratch/module-$number"
        await_module "$number"
        finish "$ribkit" show fcu --vsan 20 --module "$number" --bus "$server_url"
    done
    [[ -t 0 ]] || return 0
    printf '\nrun: all go on until Ctrl-C; more commands for them: %s routes --bus %s\n' "$ribkit" "$server_url"
    trap 'exit 0' INT TERM # as it was announced
    wait "$rib"
}
