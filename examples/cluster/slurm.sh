#!/usr/bin/env bash
#SBATCH --job-name=kavra-batch
#SBATCH --requeue
# One shard a task of a Slurm array; --array=1-N and the first argument have the same N:
#   sbatch --array=1-64 --cpus-per-task=8 --wait slurm.sh 64 logs --from list --do convert --out 'out/{dir}/{stem}.tif'
#   kavra batch --report logs/*.jsonl
#
# Tasks that were cancelled, or out of memory or time, are had by submitting the same line again: shards that are done end
# at once. RUN_SHARD is the script run-shard of this folder; Slurm runs a copy of this one, which does not know where.
set -u
shards=$1 logs=$2
shift 2
exec "${RUN_SHARD:-run-shard}" "$SLURM_ARRAY_TASK_ID" "$shards" "$logs" --jobs "${SLURM_CPUS_PER_TASK:-1}" "$@"
