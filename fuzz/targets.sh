# fuzz/targets.sh - sourced by scripts/fuzz-smoke and scripts/fuzz-long: the
# fuzz targets, and the seed corpus of each, gathered from the example jobs
# and the files under fuzz/corpus.

TNF_FUZZ_TARGETS=(hkp_tokens_fuzz block_reader_fuzz geometry_fuzz job_fuzz
  jobprefs_reader_fuzz padstack_reader_fuzz cell_reader_fuzz layout_reader_fuzz
  pdb_reader_fuzz netclass_reader_fuzz planes_reader_fuzz)

# The dictionary for a target, or nothing.
tnf_fuzz_dict() {
  case "$1" in
    block_reader_fuzz | geometry_fuzz) ;;
    *) echo "-dict=fuzz/hkp.dict" ;;
  esac
}

# Copies the seeds of target $1 into folder $2 (which exists).
tnf_fuzz_seeds() {
  local target="$1" into="$2" name job
  case "$target" in
    hkp_tokens_fuzz) cp fuzz/corpus/hkp/* "$into"/ ;;
    block_reader_fuzz) cp fuzz/corpus/block/* "$into"/ ;;
    geometry_fuzz) cp fuzz/corpus/geometry/* "$into"/ ;;
    job_fuzz)
      # Each example job as one string, its files in the framing's order.
      for job in examples/*/; do
        {
          local first=1
          for name in JobPrefs Padstack Cell Layout PDB NetClass Planes; do
            [ -f "$job$name.hkp" ] || continue
            [ $first = 1 ] || printf '\n@@@@\n'
            first=0
            cat "$job$name.hkp"
          done
        } >"$into/$(basename "$job").job"
      done
      ;;
    planes_reader_fuzz) cp fuzz/corpus/planes/* "$into"/ ;;
    *)
      case "$target" in
        jobprefs_reader_fuzz) name=JobPrefs ;;
        padstack_reader_fuzz) name=Padstack; cp fuzz/corpus/hkp/padstack_demo.hkp fuzz/corpus/padstack/* "$into"/ ;;
        cell_reader_fuzz) name=Cell ;;
        layout_reader_fuzz) name=Layout; cp fuzz/corpus/layout/* fuzz/corpus/hkp/layout_minimal.hkp "$into"/ ;;
        pdb_reader_fuzz) name=PDB ;;
        netclass_reader_fuzz) name=NetClass ;;
      esac
      for job in examples/*/; do
        [ -f "$job$name.hkp" ] && cp "$job$name.hkp" "$into/$(basename "$job")_$name.hkp"
      done
      ;;
  esac
  return 0
}
