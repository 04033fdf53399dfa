#!/usr/bin/env bash
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/planting.sh"
check=("$checks/tidy.sh" "$tree" "$tree/build")

# expectFound CHECK FILE CONTENT: clang-tidy reports the file under the check's name.
expectFound() {
    expectViolation "[$1" "$2" "$3"
}

cp "$checks/../../.clang-tidy" "$tree"
plant build/compile_commands.json '[]'
tryCheck
[[ $status != 0 ]] || report 'a build without sources should fail'

plant build/compile_commands.json "[
{
  \"directory\": \"$tree/build\",
  \"command\": \"c++ -std=c++20 \\\"-I$tree/src\\\" -o plan.o -c \\\"$tree/src/model/plan.cpp\\\"\",
  \"file\": \"$tree/src/model/plan.cpp\"
},
{
  \"directory\": \"$tree/build\",
  \"command\": \"c++ -std=c++20 \\\"-I$tree/src\\\" -o tool.o -c \\\"$tree/tools/tool.cpp\\\"\",
  \"file\": \"$tree/tools/tool.cpp\"
}
]"
good='#pragma once
namespace boxlift {
struct Size {
    int width = 0;
};
enum class FileType { AVFileTypeMPEG4, other };
class Plan {
  public:
    int cost() const { return m_cost; }
    static constexpr int fullCost = 2;

  private:
    int m_cost = fullCost;
};
} // namespace boxlift'
plant src/model/plan.h "$good"
plant src/model/plan.cpp '#include "model/plan.h"
int twice(const boxlift::Plan& plan) { return 2 * plan.cost(); }'
plant tools/tool.cpp 'int main() {}'
expectPass 'a clean tree'

expectFound readability-identifier-naming src/model/plan.cpp 'void Do_it() {}'
expectFound readability-identifier-naming tools/tool.cpp 'int main() { int Big = 0; return Big; }'
expectFound modernize-use-nullptr src/model/plan.cpp 'int* nothing() { return 0; }'
expectFound misc-unused-parameters src/model/plan.cpp 'int drop(int count) { return 1; }'
expectFound bugprone-branch-clone src/model/plan.cpp \
    'int pick(bool first) { if (first) { return 1; } else { return 1; } }'
expectFound readability-function-size src/model/plan.cpp \
    "int longOne() {
$(yes '//' | head -n 61)
return 0; }"
expectPass 'the clean tree, once more'
# A header alone changes; the source that includes it was found clean before.
expectFound readability-identifier-naming src/model/plan.h "${good/int m_cost/int cost_}"
expectFound readability-identifier-naming src/model/plan.h "${good/other/Other}"
expectFound modernize-use-override src/model/plan.h "$good
struct Base { virtual int f(); };
struct Derived : Base { virtual int f(); };"
# Remembered verdicts do not outlive the rules.
expectFound readability-magic-numbers .clang-tidy "Checks: '-*,readability-magic-numbers'
WarningsAsErrors: '*'
CheckOptions:
  - { key: readability-magic-numbers.IgnoredIntegerValues, value: '' }
  - { key: readability-magic-numbers.IgnorePowersOf2IntegerValues, value: false }"

exit $((failures > 0))
