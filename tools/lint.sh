#!/usr/bin/env bash
# Checks format (clang-format) and rules (clang-tidy, cppcheck) of our C++ files; any finding fails.
#
#   tools/lint.sh                 the files changed since the last commit
#   tools/lint.sh --base REF      the files changed since REF
#   tools/lint.sh --all           every file under src, tests, bench, fuzz and demo; src also by cppcheck
#   tools/lint.sh FILE...         these files
#
# clang-tidy needs the compile database of build/release (LUMO_BUILD names another build folder) and reads a header
# through a source that includes it. LUMO_JOBS sets how many run at once (2). tools/cppcheck.txt holds what of cppcheck
# is let pass, and why.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${LUMO_BUILD:-build/release}
jobs=${LUMO_JOBS:-2}

# Every source and header that exists, in a stable order.
ours() { find src tests bench fuzz demo -name '*.cpp' -o -name '*.h' 2>/dev/null | sort; }

changed() {
  { git diff --name-only --diff-filter=d "$1" -- src tests bench fuzz demo
    git ls-files --others --exclude-standard -- src tests bench fuzz demo; } | grep -E '\.(cpp|h)$' | sort -u || true
}

all=
case ${1:-} in
  --all) all=1; mapfile -t files < <(ours) ;;
  --base) mapfile -t files < <(changed "${2:?--base wants a commit}") ;;
  '') mapfile -t files < <(changed HEAD) ;;
  -*) sed -n '2,12s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
  *) files=("$@") ;;
esac
if [ ${#files[@]} -eq 0 ]; then
  echo "lint: no C++ file has changed"
  exit 0
fi
if [ ! -f "$build/compile_commands.json" ]; then
  echo "lint: $build/compile_commands.json is missing; run 'cmake --preset release' first" >&2
  exit 2
fi

# The sources to read: the given ones, and for a header its own .cpp or else one source that includes it.
sources=()
for file in "${files[@]}"; do
  if [[ $file == *.cpp ]]; then
    sources+=("$file")
  elif [ -f "${file%.h}.cpp" ]; then
    sources+=("${file%.h}.cpp")
  else
    includer=$(grep -rlF --include='*.cpp' "${file#*/}\"" src tests bench fuzz demo 2>/dev/null | sort | head -n 1 || true)
    if [ -z "$includer" ]; then
      echo "lint: no source includes $file directly; it is read where another header brings it in" >&2
    else
      sources+=("$includer")
    fi
  fi
done
built=()
for source in $(printf '%s\n' "${sources[@]}" | sort -u); do
  if grep -qF "/$source\"" "$build/compile_commands.json"; then
    built+=("$source")
  else
    echo "lint: $source is not built by $build; only its format is checked" >&2
  fi
done

failed=0
clang-format --dry-run -Werror "${files[@]}" || failed=1
if [ ${#built[@]} -gt 0 ]; then
  printf '%s\0' "${built[@]}" |
    xargs -0 -n 1 -P "$jobs" clang-tidy -p "$build" --quiet --extra-arg=-Wno-unknown-warning-option 2> >(grep -vE '^[0-9]+ warnings? (generated|treated)' >&2) ||
    failed=1
fi
if [ -n "$all" ]; then
  # All at once, for one room tells it what another one's templates do. A line of the list that nothing needs is a finding.
  cppcheck -I src --std=c++20 --library=qt --library=posix --library=gnu --enable=warning,performance,portability,style,information \
    --suppressions-list=tools/cppcheck.txt --template='{file}:{line}: {severity}: {message} [{id}]' --quiet --error-exitcode=1 \
    src || failed=1
fi
if [ $failed -ne 0 ]; then
  echo "lint: findings above (${#files[@]} files)" >&2
  exit 1
fi
echo "lint: ${#files[@]} files are clean (${#built[@]} sources read)"
