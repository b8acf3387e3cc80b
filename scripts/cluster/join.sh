#!/bin/bash
# A Slurm job that joins FOLDER/1.raw to FOLDER/SLICES.raw. The output stands under its name only once it is whole.
#   sbatch --dependency=afterok:ARRAY join.sh FOLDER SLICES OUTPUT
set -euo pipefail
folder=$1 slices=$2 output=$3

# In the order of the numbers: FOLDER/*.raw would put slice 10 before slice 2.
for ((k = 1; k <= slices; ++k)); do cat "$folder/$k.raw"; done >"$output.part"
mv "$output.part" "$output"
