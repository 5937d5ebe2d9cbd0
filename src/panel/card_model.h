#pragma once
// What the panel shows for an outcome, as plain data: one card with its header, its texts,
// its keyboard rows and its buttons. The widgets only lay this out, so every decision of a
// card is made (and tested) here, without a display.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/phase.h"
#include "core/localized_strings.h"
#include "core/pipeline_outcome.h"

namespace nuvrel::panel {

// What pressing a row or a button does.
struct CardAction {
    enum class Kind {
        none,
        openFile,    // a local path, with the desktop's default handler
        revealFile,  // a local path, shown in the file manager
        openURL,     // an address, in the browser or its handler
        copyText,    // onto the clipboard
        runQuery,    // a sentence, run as if typed
        confirm,     // carry out row `row` of the confirmation on show
        retry,       // run the shown query again
    };
    Kind kind = Kind::none;
    std::string target{};
    std::size_t row = 0;

    bool operator==(const CardAction&) const = default;
};

// One keyboard-selectable line of a card.
struct CardRow {
    enum class Elide { end, middle };
    std::string title{};
    std::string detail{};
    // Return on the selected row.
    CardAction activate{};
    // Ctrl+Return: the row's second action (a file's folder in the file manager).
    CardAction alternate{};
    // Ctrl+C on the selected row.
    std::string copyText{};
    // Paths lose their middle, so that the folder and the file name both stay in view.
    Elide elide = Elide::end;

    bool operator==(const CardRow&) const = default;
};

struct CardButton {
    std::string label{};
    CardAction action{};

    bool operator==(const CardButton&) const = default;
};

struct Card {
    enum class Tone { normal, error, notice };
    std::string title{};
    std::string subtitle{};
    // Selectable texts, each wrapped in full.
    std::vector<std::string> paragraphs{};
    std::vector<CardRow> rows{};
    std::vector<CardButton> buttons{};
    std::string footer{};
    Tone tone = Tone::normal;

    bool operator==(const Card&) const = default;
};

Card buildCard(const core::PipelineOutcome& outcome, const core::LocalizedStrings& strings);

// The chain card: one row per step, with the step's own card text once it has ended.
Card buildChainCard(const std::vector<app::ChainStepState>& steps,
                    const core::LocalizedStrings& strings);

// The thinking state; while the first model downloads it says so, with the percentage.
Card buildThinkingCard(std::optional<double> modelDownloadProgress,
                       const core::LocalizedStrings& strings);

// What a confirmed row became, for the row's own line: the outcome of confirmShown.
struct ConfirmedRow {
    enum class State { done, needsPermission, failed };
    State state = State::done;
    std::string text{};

    bool operator==(const ConfirmedRow&) const = default;
};
ConfirmedRow describeConfirmed(const core::PipelineOutcome& outcome,
                               const core::LocalizedStrings& strings);

}  // namespace nuvrel::panel
