#include "export/ConversionJob.h"

namespace {
thread_local const ConversionJob* current = nullptr;
} // namespace

const ConversionJob* currentConversionJob() {
    return current;
}

ScopedConversionJob::ScopedConversionJob(const ConversionJob& job) : previous(current) {
    current = &job;
}

ScopedConversionJob::~ScopedConversionJob() {
    current = previous;
}
