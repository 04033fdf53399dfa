#!/usr/bin/env bash
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/planting.sh"
check=("$checks/all_tests_registered.sh" "$tree")

plant CMakeLists.txt 'add_subdirectory(src)
add_subdirectory(tools)
add_subdirectory(tests)'
plant src/CMakeLists.txt 'add_subdirectory(model)'
plant src/model/CMakeLists.txt 'add_library(model STATIC plan.cpp
    detail/table.cpp)'
plant src/model/plan.cpp '//'
plant src/model/detail/table.cpp '//'
plant tools/CMakeLists.txt 'add_executable(tool tool.cpp)'
plant tools/tool.cpp '//'
plant tests/CMakeLists.txt 'add_subdirectory(engine/media)
add_subdirectory(model)'
plant tests/model/CMakeLists.txt 'boxlift_add_tests(model_tests SOURCES plan_test.cpp fakes/fake.cpp)'
plant tests/model/plan_test.cpp '//'
plant tests/model/fakes/fake.cpp '//'
plant tests/engine/media/CMakeLists.txt 'boxlift_add_tests(media_tests SOURCES "time_test.cpp")'
plant tests/engine/media/time_test.cpp '//'
expectPass 'a tree that lists everything'

expectViolation 'tests/model/mode_test.cpp is not in' tests/model/mode_test.cpp '//'
expectViolation 'tests/model/fakes/fake_test.cpp is not in' tests/model/fakes/fake_test.cpp '//'
expectViolation 'tests/lonely/mode_test.cpp is not in' tests/lonely/mode_test.cpp '//'
expectViolation 'src/model/mode.cpp is in no' src/model/mode.cpp '//'
expectViolation 'tools/mode.cpp is in no' tools/mode.cpp '//'
expectViolation 'tests/model/plan_test.cpp is not in' tests/model/CMakeLists.txt \
    'boxlift_add_tests(model_tests SOURCES fakes/fake.cpp) # plan_test.cpp'
expectViolation 'tests/model/plan_test.cpp is not in' tests/model/CMakeLists.txt \
    'boxlift_add_tests(model_tests SOURCES fakes/fake.cpp another_plan_test.cpp)'
expectViolation 'names gone_test.cpp, which does not exist' tests/model/CMakeLists.txt \
    'boxlift_add_tests(model_tests SOURCES plan_test.cpp gone_test.cpp fakes/fake.cpp)'
expectViolation 'tests/model is not added' tests/CMakeLists.txt \
    '# add_subdirectory(model)
add_subdirectory(engine/media)'
expectViolation 'tests/engine/media is not added' tests/CMakeLists.txt 'add_subdirectory(model)'

exit $((failures > 0))
