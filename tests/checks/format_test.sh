#!/usr/bin/env bash
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/planting.sh"
check=("$checks/format.sh" "$tree")

cp "$checks/../../.clang-format" "$tree"
tryCheck
[[ $status != 0 ]] || report 'a tree without sources should fail'

plant src/model/plan.h 'int plan(int* target);'
plant tools/tool.cpp 'int tool();'
expectPass 'a well formatted tree'
expectViolation 'plan.h:1:' src/model/plan.h 'int  plan(int *target);'
expectViolation 'other.cpp:2:' src/model/other.cpp 'int plan() {
  return 0; }'
expectViolation 'tool.cpp:1:' tools/tool.cpp 'int main(){return 0;}'
expectViolation 'plan_test.cpp:' tests/model/plan_test.cpp 'int  i;'

exit $((failures > 0))
