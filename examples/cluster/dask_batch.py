#!/usr/bin/env python3
"""A batch in N shards as tasks of Dask, and then one report of all:

    dask_batch.py [--scheduler tcp://HOST:8786] N LOGS OPTIONS-OF-KAVRA-BATCH...
    dask_batch.py 64 logs --from list --do 'texture --format bc7' --out 'textures/{dir}/{stem}.dds'

Without --scheduler it has workers of its own on this machine (--workers). Tasks whose worker dies go to another one.
Exit status: 0 all written, 1 some files failed, 75 start it again, 2 wrong options.
"""
import argparse
import glob
import os
import pathlib
import subprocess
import sys

from distributed import Client, LocalCluster

RUN_SHARD = str(pathlib.Path(__file__).resolve().parent / "run-shard")


def run_shard(shard, shards, logs, options, run, folder):
    """Gives the exit status of a shard that has come to its end, or is wrong; raises for all others, to be tried again."""
    status = subprocess.run([run, str(shard), str(shards), logs, *options], cwd=folder, stdin=subprocess.DEVNULL).returncode
    if status not in (0, 1, 2):
        raise RuntimeError(f"shard {shard} ended with {status}")
    return status


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--scheduler", help="the address of a running one")
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    parser.add_argument("shards", type=int)
    parser.add_argument("logs")
    parser.add_argument("options", nargs=argparse.REMAINDER)
    asked = parser.parse_args()

    cluster = asked.scheduler or LocalCluster(n_workers=asked.workers, threads_per_worker=1, dashboard_address=None)
    unfinished = wrong = 0
    with Client(cluster) as client:
        tasks = [client.submit(run_shard, shard, asked.shards, asked.logs, asked.options, RUN_SHARD, os.getcwd(),
                               pure=False, retries=3) for shard in range(1, asked.shards + 1)]
        for task in tasks:
            failure = task.exception()
            if failure is not None:
                unfinished += 1
                print(failure, file=sys.stderr)
            elif task.result() == 2:
                wrong += 1
    if not asked.scheduler:
        cluster.close()

    if wrong:
        return 2
    logs = sorted(glob.glob(f"{glob.escape(asked.logs)}/shard-*-of-{asked.shards}.jsonl"))
    status = subprocess.run([os.environ.get("KAVRA", "kavra"), "batch", "--report", *logs]).returncode
    if unfinished:
        print(f"{unfinished} shards did not come to their end; start this again", file=sys.stderr)
        return 75
    return status


if __name__ == "__main__":
    sys.exit(main())
