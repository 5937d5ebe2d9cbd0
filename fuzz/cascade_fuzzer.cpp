// The whole cascade on a query, then the router on a model reply: the query, a NUL, then the
// reply. The pipeline runs with its pure steps and a model that answers with the reply; the
// matchers of the steps that touch the outside world run on the query directly. An outcome
// always comes back, and a matcher's value is grounded in the query where it names a thing
// the user typed.

#include <cmath>

#include "answers/calculator_fast_path.h"
#include "base/text.h"
#include "fuzz_support.h"
#include "personal/calendar_fast_path.h"
#include "personal/reminder_fast_path.h"
#include "personal/timer_fast_path.h"
#include "pipeline/currency_fast_path.h"
#include "pipeline/document_summarize_fast_path.h"
#include "pipeline/help_fast_path.h"
#include "pipeline/pipeline.h"
#include "pipeline/translate_fast_path.h"
#include "pipeline/weather_fast_path.h"
#include "reply_backend.h"

using namespace nuvrel;

namespace {

class NoLines final : public base::DiagnosticSink {
public:
    void writeLine(std::string_view) override {}
};

bool grounded(std::string_view query, std::string_view value) {
    return !value.empty() && query.find(value) != std::string_view::npos;
}

void matchLiveSteps(std::string_view query) {
    const bool checkable = base::text::isValidUtf8(query);
    if (const auto request = pipeline::CurrencyFastPath::match(query)) {
        FUZZ_CHECK(std::isfinite(request->amount) && request->amount >= 0);
    }
    if (const auto target = pipeline::WeatherFastPath::match(query); target && checkable) {
        if (const auto* place = target->name()) FUZZ_CHECK(grounded(query, *place));
    }
    if (const auto name = pipeline::DocumentSummarizeFastPath::match(query); name && checkable) {
        FUZZ_CHECK(grounded(query, *name));
    }
    if (const auto candidate = pipeline::TranslateFastPath::match(query)) {
        FUZZ_CHECK(!base::text::trim(candidate->text).empty());
        const auto& target = candidate->targetLanguage;
        FUZZ_CHECK(target == "en" || target == "ko" || target == "ja" || target == "zh");
    }
    if (const auto reminder = personal::ReminderFastPath::match(query)) {
        FUZZ_CHECK(!reminder->title.empty());
        FUZZ_CHECK(reminder->minute >= 0 && reminder->minute < 60);
    }
    (void)personal::ReminderDeleteFastPath::match(query);
    if (const auto event = personal::CalendarAddEventFastPath::match(query)) {
        FUZZ_CHECK(!event->title.empty());
        FUZZ_CHECK(event->minute >= 0 && event->minute < 60);
    }
    if (const auto deletion = personal::CalendarDeleteFastPath::match(query)) {
        FUZZ_CHECK(!deletion->dateToken.empty());
    }
    if (const auto timer = personal::TimerFastPath::match(query)) {
        FUZZ_CHECK(timer->durationSeconds > 0 && !timer->displayText.empty());
    }
    (void)personal::TimerFastPath::matchCancel(query);
    (void)pipeline::HelpFastPath::match(query);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [query, reply] = fuzz::split(fuzz::text(data, size));
    matchLiveSteps(query);

    static const auto sink = std::make_shared<NoLines>();
    pipeline::Pipeline pipeline;
    pipeline.router.backend = std::make_shared<fuzz::ReplyBackend>(std::string(reply));
    pipeline.liveFastPathsEnabled = false;
    pipeline.networkFeaturesEnabled = false;
    pipeline.diagnostics = base::Diagnostics(sink);
    pipeline.openURL = [](std::string) {};
    // The program hands the pipeline NFC text; run() promises never to throw.
    const auto outcome = pipeline.run(base::text::nfc(query));
    FUZZ_CHECK(outcome.kind() != core::PipelineOutcome::Kind::cancelled);
    return 0;
}
