#pragma once
// What the validator has proven executable: one plan record, which also names the case.

#include <variant>

#include "core/intent_id.h"
#include "core/plan_records.h"
#include "core/variant_case.h"

namespace nuvrel::core {

class ActionPlan {
public:
    // Alternatives in declared order: finderSearch, calendarQuery, messageSend, musicPlay,
    // webSearch.
    using Storage = std::variant<FinderQuery, CalendarRange, MessageDraft, MusicCommand, WebQuery>;

    template <VariantCase<Storage> Record>
    ActionPlan(Record&& record) : storage_(std::forward<Record>(record)) {}

    // The intent whose plan this is (finderSearch for a FinderQuery, ...).
    IntentID intentID() const;

    template <VariantCase<Storage> Record>
    bool is() const {
        return std::holds_alternative<Record>(storage_);
    }
    // The record when the plan holds that case, else null.
    template <VariantCase<Storage> Record>
    const Record* get() const {
        return std::get_if<Record>(&storage_);
    }

    const Storage& storage() const { return storage_; }

    bool operator==(const ActionPlan&) const = default;

private:
    Storage storage_;
};

}  // namespace nuvrel::core
