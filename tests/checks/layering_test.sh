#!/usr/bin/env bash
set -euo pipefail
source "$(dirname -- "${BASH_SOURCE[0]}")/planting.sh"
check=("$checks/layering.sh" "$tree")

plant src/model/plan.h '#include <string>
#include "model/target.h"'
plant src/model/CMakeLists.txt 'add_library(boxlift_model STATIC plan.cpp)
target_link_libraries(boxlift_model PUBLIC boxlift_options)'
plant src/engine/media/asset.cpp '#include <fcntl.h>
#include "engine/media/asset.h"
#include "model/target.h"
extern "C" {
#include <libavformat/avformat.h>
}'
plant src/engine/media/CMakeLists.txt 'target_link_libraries(boxlift_media PUBLIC boxlift_model
    PRIVATE PkgConfig::FFMPEG)'
plant src/engine/driver.cpp '#include "engine/converter.h"
#include "engine/media/factory.h"'
plant src/engine/CMakeLists.txt 'target_link_libraries(boxlift_engine PUBLIC boxlift_media)'
plant src/worker/protocol/message.cpp '#include "engine/media/error.h"
#include "worker/protocol/message.h"'
plant src/worker/protocol/CMakeLists.txt 'target_link_libraries(boxlift_worker_protocol PUBLIC boxlift_media)'
plant src/worker/service.cpp '#include "engine/converter.h"
#include "worker/protocol/message.h"'
plant src/worker/CMakeLists.txt 'target_link_libraries(boxlift_worker
    PUBLIC boxlift_engine boxlift_worker_protocol)'
plant src/queue/job.cpp '#include <QObject>
#include "queue/job.h"
#include "worker/protocol/message.h"
#include "engine/converter.h"
#include "job.moc"'
plant src/queue/CMakeLists.txt 'target_link_libraries(boxlift_queue PUBLIC boxlift_engine Qt6::Core)'
plant src/ui/window.cpp '#include "queue/job.h"
#include <QtQuick/QQuickView>'
plant tools/boxlift_drive.cpp '#include "queue/expand.h"'
plant tools/boxlift_sample.cpp '#include <libavformat/avformat.h>'
plant tests/support/media_probe.cpp '#include <libavformat/avformat.h>'
expectPass 'a tree whose arrows point downward'

# Includes.
expectViolation 'plan.cpp:2: src/model must not include engine/converter.h' \
    src/model/plan.cpp '// A comment.
#include "engine/converter.h"'
expectViolation 'src/model must not include queue/job.h' src/model/plan.cpp '#include "queue/job.h"'
expectViolation 'nothing but the standard library' src/model/plan.cpp '#include <sys/stat.h>'
expectViolation 'must not see FFmpeg' src/model/plan.cpp '#include <libavutil/avutil.h>'
expectViolation 'must not see Qt' src/model/plan.cpp '#include <QString>'
expectViolation 'src/model must not include ../queue/job.h' \
    src/model/plan.cpp '#include "../queue/job.h"'
expectViolation 'src/engine/media must not include engine/converter.h' \
    src/engine/media/asset.cpp '#include "engine/converter.h"'
expectViolation 'must not see Qt' src/engine/media/asset.cpp '  #  include <QtCore/QObject>'
expectViolation 'src/engine must not include queue/job.h' \
    src/engine/driver.cpp '#include "queue/job.h"'
expectViolation 'src/engine must not see FFmpeg' \
    src/engine/driver.cpp '#include "libavcodec/avcodec.h"'
expectViolation 'src/queue must not include ui/window.h' src/queue/job.h '#include "ui/window.h"'
expectViolation 'must not see FFmpeg' src/queue/job.h '#include <libswscale/swscale.h>'
expectViolation 'must not see FFmpeg' src/ui/window.cpp '#include <libavutil/avutil.h>'
expectViolation 'src/worker must not include queue/job.h' \
    src/worker/main.cpp '#include "queue/job.h"'
expectViolation 'src/worker must not see Qt' src/worker/main.cpp '#include <QCoreApplication>'
expectViolation 'src/worker/protocol must not include worker/service.h' \
    src/worker/protocol/message.cpp '#include "worker/service.h"'
expectViolation 'src/worker/protocol must not include engine/converter.h' \
    src/worker/protocol/message.cpp '#include "engine/converter.h"'
expectViolation 'src/queue must not include worker/service.h' \
    src/queue/job.cpp '#include "worker/service.h"'
expectViolation 'no layer has this file' src/extra/file.cpp '#include <string>'
expectViolation 'only src/engine/media sees FFmpeg' \
    tools/boxlift_drive.cpp '#include <libavutil/avutil.h>'
expectViolation 'only src/engine/media sees FFmpeg' \
    tests/model/plan_test.cpp '#include <libavutil/avutil.h>'

# Link lines.
expectViolation 'src/model must not link boxlift_engine' src/model/CMakeLists.txt \
    'target_link_libraries(boxlift_model PUBLIC boxlift_options boxlift_engine)'
expectViolation 'src/model must not link PkgConfig::FFMPEG' src/model/CMakeLists.txt \
    'target_link_libraries(boxlift_model PRIVATE PkgConfig::FFMPEG)'
expectViolation 'src/engine/media must not link boxlift_engine' src/engine/media/CMakeLists.txt \
    'target_link_libraries(boxlift_media
    PUBLIC boxlift_model # as ever
    PRIVATE
        boxlift_engine
)'
expectViolation 'src/engine must not link Qt6::Core' src/engine/CMakeLists.txt \
    'target_link_libraries(boxlift_engine PUBLIC boxlift_media Qt6::Core)'
expectViolation 'src/worker/protocol must not link boxlift_engine' src/worker/protocol/CMakeLists.txt \
    'target_link_libraries(boxlift_worker_protocol PUBLIC boxlift_engine)'
expectViolation 'src/queue must not link boxlift_worker' src/queue/CMakeLists.txt \
    'target_link_libraries(boxlift_queue PUBLIC boxlift_engine boxlift_worker)'
expectViolation 'src/queue must not link boxlift_media' src/queue/CMakeLists.txt \
    'target_link_libraries(boxlift_queue PUBLIC boxlift_media)'

rm -r "$tree/src"
tryCheck
[[ $status != 0 ]] || report 'a tree without sources should fail'

exit $((failures > 0))
