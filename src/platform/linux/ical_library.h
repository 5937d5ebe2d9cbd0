#pragma once
// libical, opened on the first calendar or reminder read rather than at every start of the
// program. Types and constants come from its header.

#include <libical/ical.h>

#include "base/shared_library.h"

namespace nuvrel::platform {

// The functions of libical that the vdir stores call.
struct IcalLibrary {
    // Opens libical and resolves every member. Throws base::SharedLibraryError.
    IcalLibrary();

    base::SharedLibrary library;
    decltype(&::icalcomponent_add_component) componentAddComponent = nullptr;
    decltype(&::icalcomponent_add_property) componentAddProperty = nullptr;
    decltype(&::icalcomponent_as_ical_string_r) componentAsIcalStringR = nullptr;
    decltype(&::icalcomponent_free) componentFree = nullptr;
    decltype(&::icalcomponent_get_first_component) componentGetFirstComponent = nullptr;
    decltype(&::icalcomponent_get_first_property) componentGetFirstProperty = nullptr;
    decltype(&::icalcomponent_get_location) componentGetLocation = nullptr;
    decltype(&::icalcomponent_get_next_component) componentGetNextComponent = nullptr;
    decltype(&::icalcomponent_get_next_property) componentGetNextProperty = nullptr;
    decltype(&::icalcomponent_get_summary) componentGetSummary = nullptr;
    decltype(&::icalcomponent_get_uid) componentGetUid = nullptr;
    decltype(&::icalcomponent_isa) componentIsa = nullptr;
    decltype(&::icalcomponent_new) componentNew = nullptr;
    decltype(&::icalcomponent_new_clone) componentNewClone = nullptr;
    decltype(&::icalcomponent_remove_component) componentRemoveComponent = nullptr;
    decltype(&::icaldurationtype_as_int) durationtypeAsInt = nullptr;
    decltype(&::icaldurationtype_null_duration) durationtypeNullDuration = nullptr;
    decltype(&::icalparameter_new_tzid) parameterNewTzid = nullptr;
    decltype(&::icalparser_parse_string) parserParseString = nullptr;
    decltype(&::icalproperty_add_parameter) propertyAddParameter = nullptr;
    decltype(&::icalproperty_get_datetime_with_component) propertyGetDatetimeWithComponent =
        nullptr;
    decltype(&::icalproperty_get_duration) propertyGetDuration = nullptr;
    decltype(&::icalproperty_get_rrule) propertyGetRrule = nullptr;
    decltype(&::icalproperty_get_status) propertyGetStatus = nullptr;
    decltype(&::icalproperty_new) propertyNew = nullptr;
    decltype(&::icalproperty_new_action) propertyNewAction = nullptr;
    decltype(&::icalproperty_new_description) propertyNewDescription = nullptr;
    decltype(&::icalproperty_new_dtstamp) propertyNewDtstamp = nullptr;
    decltype(&::icalproperty_new_prodid) propertyNewProdid = nullptr;
    decltype(&::icalproperty_new_status) propertyNewStatus = nullptr;
    decltype(&::icalproperty_new_summary) propertyNewSummary = nullptr;
    decltype(&::icalproperty_new_trigger) propertyNewTrigger = nullptr;
    decltype(&::icalproperty_new_uid) propertyNewUid = nullptr;
    decltype(&::icalproperty_new_version) propertyNewVersion = nullptr;
    decltype(&::icalproperty_set_tzid) propertySetTzid = nullptr;
    decltype(&::icalproperty_set_value) propertySetValue = nullptr;
    decltype(&::icalrecur_iterator_free) recurIteratorFree = nullptr;
    decltype(&::icalrecur_iterator_new) recurIteratorNew = nullptr;
    decltype(&::icalrecur_iterator_next) recurIteratorNext = nullptr;
    decltype(&::icalrecurrencetype_as_string) recurrencetypeAsString = nullptr;
    decltype(&::icalrecurrencetype_from_string) recurrencetypeFromString = nullptr;
    decltype(&::icaltime_as_timet_with_zone) timeAsTimetWithZone = nullptr;
    decltype(&::icaltime_from_timet_with_zone) timeFromTimetWithZone = nullptr;
    decltype(&::icaltime_is_null_time) timeIsNullTime = nullptr;
    decltype(&::icaltime_is_utc) timeIsUtc = nullptr;
    decltype(&::icaltime_is_valid_time) timeIsValidTime = nullptr;
    decltype(&::icaltime_null_date) timeNullDate = nullptr;
    decltype(&::icaltime_null_time) timeNullTime = nullptr;
    decltype(&::icaltimezone_get_builtin_timezone) timezoneGetBuiltinTimezone = nullptr;
    decltype(&::icaltimezone_get_component) timezoneGetComponent = nullptr;
    decltype(&::icaltimezone_get_tzid) timezoneGetTzid = nullptr;
    decltype(&::icaltimezone_get_utc_timezone) timezoneGetUtcTimezone = nullptr;
    decltype(&::icalvalue_new_date) valueNewDate = nullptr;
    decltype(&::icalvalue_new_datetime) valueNewDatetime = nullptr;
};

// libical, opened once per process; thread-safe. Throws base::SharedLibraryError where it is not
// installed (a later call tries again).
const IcalLibrary& ical();

}  // namespace nuvrel::platform
