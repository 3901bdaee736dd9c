#!/usr/bin/env bash
# Job status for Snakemake's --cluster-status: prints running, success or failed for the SLURM
# job id given, from sacct (squeue while sacct does not know the job yet).
jobid=$1
state=$(sacct -j "$jobid" -P -n -o JobIdRaw,State 2>/dev/null | awk -F'|' -v id="$jobid" '$1 == id { print $2; exit }')
[ -n "$state" ] || state=$(squeue -h -j "$jobid" -o %T 2>/dev/null | head -1)
case ${state%% *} in
  COMPLETED) echo success ;;
  "" | PENDING | CONFIGURING | RUNNING | COMPLETING | REQUEUED | RESIZING | SUSPENDED | STAGE_OUT) echo running ;;
  *) echo failed ;;
esac
