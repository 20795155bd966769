#!/usr/bin/env bash
# A batch in N shards under GNU parallel, on this machine or on several, and then one report of all:
#   parallel.sh N LOGS OPTIONS-OF-KAVRA-BATCH...
#   parallel.sh 64 logs --from list --do 'texture --format bc7' --out 'textures/{dir}/{stem}.dds'
#
# PARALLEL holds further options for parallel: '--jobs 4', or '--sshloginfile nodes' with this folder and the files at the
# same paths everywhere. Exit status: 0 all written, 1 some files failed, 75 start it again, 2 wrong options.
set -u
shards=$1 logs=$2
shift 2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# A shard that ends with bad files (1) is tried again as well, and is done at once: its log has them.
seq "$shards" |
  parallel --quote --retries 3 --line-buffer --workdir "$PWD" --env KAVRA --env KAVRA_TRIES --env KAVRA_PAUSE \
    "$here/run-shard" {} "$shards" "$logs" "$@"
unfinished=$?

"${KAVRA:-kavra}" batch --report "$logs"/shard-*-of-"$shards".jsonl
status=$?
[ "$unfinished" = 0 ] || { echo "$unfinished shards did not come to their end; start this again" >&2; exit 75; }
exit "$status"
