#include "otio/otio_time.h"

#include <cmath>

bool otioRate(double rate, OtioRate& out) {
    if (!std::isfinite(rate) || rate <= 0 || rate > 4e6) return false;
    if (std::trunc(rate) == rate) {
        out = {uint32_t(rate), 1};
        return true;
    }
    out = {uint32_t(std::ceil(rate)) * 1000, 1001};
    return true;
}

nlohmann::ordered_json otioTime(double value, double rate) {
    return {{"OTIO_SCHEMA", "RationalTime.1"}, {"value", value}, {"rate", rate}};
}

nlohmann::ordered_json otioRange(double start, double duration, double rate) {
    return {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", otioTime(start, rate)}, {"duration", otioTime(duration, rate)}};
}
