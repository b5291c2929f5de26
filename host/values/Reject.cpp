#include "host/values/Reject.h"

namespace host {

const char* nameOf(Stage stage) {
    switch (stage) {
        case Stage::kReceive:
            return "receive";
        case Stage::kParse:
            return "parse";
        case Stage::kType:
            return "type";
        case Stage::kSink:
            break;
    }
    return "sink";
}

Stage stageOf(std::string_view name) {
    for (const Stage stage : {Stage::kReceive, Stage::kParse, Stage::kType}) {
        if (name == nameOf(stage)) return stage;
    }
    return Stage::kSink;
}

}  // namespace host
