#!/bin/bash
# A task of a Slurm array job: mixes one of SLICES equal parts of a timeline into FOLDER/K.raw. A part that is there is
# done, so the same submission again mixes what is missing. See docs/cluster.md.
#   sbatch --array=1-SLICES slice.sh TIMELINE FOLDER SLICES [OPTION OF audlmd mix]...
set -euo pipefail
timeline=$1 folder=$2 slices=$3
part=$folder/$SLURM_ARRAY_TASK_ID.raw

if [ -e "$part" ]; then
    echo "'$part' is there already"
    exit 0
fi
# SLURM_ARRAY_TASK_COUNT is no substitute for SLICES: it counts the tasks of this submission, which may repeat a few.
exec audlmd mix "$timeline" -o "$part" --slice "$SLURM_ARRAY_TASK_ID/$slices" --strict \
    --threads "${SLURM_CPUS_PER_TASK:-1}" "${@:4}"
