#!/bin/bash
# Exports each line of a manifest as a job of GNU parallel, whose options may follow, such as those for other machines
# that see the same files:
#
#   vornel-parallel.sh scenes.jsonl --jobs 8 --joblog jobs.log --sshloginfile machines
#
# Ends with the number of failed lines, 101 for more. VORNEL names the command when it isn't in PATH.
set -euo pipefail

manifest=$(realpath -- "${1:?usage: vornel-parallel.sh MANIFEST [OPTIONS OF PARALLEL]}")
shift
seq "$(grep -c '' "$manifest")" |
  parallel --quote --line-buffer "$@" "${VORNEL:-vornel}" batch "$manifest" --task {}
