#include "platform/linux/ical_library.h"

namespace nuvrel::platform {

IcalLibrary::IcalLibrary() : library("libical.so.3") {
    library.resolve(componentAddComponent, "icalcomponent_add_component");
    library.resolve(componentAddProperty, "icalcomponent_add_property");
    library.resolve(componentAsIcalStringR, "icalcomponent_as_ical_string_r");
    library.resolve(componentFree, "icalcomponent_free");
    library.resolve(componentGetFirstComponent, "icalcomponent_get_first_component");
    library.resolve(componentGetFirstProperty, "icalcomponent_get_first_property");
    library.resolve(componentGetLocation, "icalcomponent_get_location");
    library.resolve(componentGetNextComponent, "icalcomponent_get_next_component");
    library.resolve(componentGetNextProperty, "icalcomponent_get_next_property");
    library.resolve(componentGetSummary, "icalcomponent_get_summary");
    library.resolve(componentGetUid, "icalcomponent_get_uid");
    library.resolve(componentIsa, "icalcomponent_isa");
    library.resolve(componentNew, "icalcomponent_new");
    library.resolve(componentNewClone, "icalcomponent_new_clone");
    library.resolve(componentRemoveComponent, "icalcomponent_remove_component");
    library.resolve(durationtypeAsInt, "icaldurationtype_as_int");
    library.resolve(durationtypeNullDuration, "icaldurationtype_null_duration");
    library.resolve(parameterNewTzid, "icalparameter_new_tzid");
    library.resolve(parserParseString, "icalparser_parse_string");
    library.resolve(propertyAddParameter, "icalproperty_add_parameter");
    library.resolve(propertyGetDatetimeWithComponent, "icalproperty_get_datetime_with_component");
    library.resolve(propertyGetDuration, "icalproperty_get_duration");
    library.resolve(propertyGetRrule, "icalproperty_get_rrule");
    library.resolve(propertyGetStatus, "icalproperty_get_status");
    library.resolve(propertyNew, "icalproperty_new");
    library.resolve(propertyNewAction, "icalproperty_new_action");
    library.resolve(propertyNewDescription, "icalproperty_new_description");
    library.resolve(propertyNewDtstamp, "icalproperty_new_dtstamp");
    library.resolve(propertyNewProdid, "icalproperty_new_prodid");
    library.resolve(propertyNewStatus, "icalproperty_new_status");
    library.resolve(propertyNewSummary, "icalproperty_new_summary");
    library.resolve(propertyNewTrigger, "icalproperty_new_trigger");
    library.resolve(propertyNewUid, "icalproperty_new_uid");
    library.resolve(propertyNewVersion, "icalproperty_new_version");
    library.resolve(propertySetTzid, "icalproperty_set_tzid");
    library.resolve(propertySetValue, "icalproperty_set_value");
    library.resolve(recurIteratorFree, "icalrecur_iterator_free");
    library.resolve(recurIteratorNew, "icalrecur_iterator_new");
    library.resolve(recurIteratorNext, "icalrecur_iterator_next");
    library.resolve(recurrencetypeAsString, "icalrecurrencetype_as_string");
    library.resolve(recurrencetypeFromString, "icalrecurrencetype_from_string");
    library.resolve(timeAsTimetWithZone, "icaltime_as_timet_with_zone");
    library.resolve(timeFromTimetWithZone, "icaltime_from_timet_with_zone");
    library.resolve(timeIsNullTime, "icaltime_is_null_time");
    library.resolve(timeIsUtc, "icaltime_is_utc");
    library.resolve(timeIsValidTime, "icaltime_is_valid_time");
    library.resolve(timeNullDate, "icaltime_null_date");
    library.resolve(timeNullTime, "icaltime_null_time");
    library.resolve(timezoneGetBuiltinTimezone, "icaltimezone_get_builtin_timezone");
    library.resolve(timezoneGetComponent, "icaltimezone_get_component");
    library.resolve(timezoneGetTzid, "icaltimezone_get_tzid");
    library.resolve(timezoneGetUtcTimezone, "icaltimezone_get_utc_timezone");
    library.resolve(valueNewDate, "icalvalue_new_date");
    library.resolve(valueNewDatetime, "icalvalue_new_datetime");
}

const IcalLibrary& ical() {
    return base::openedOnce<IcalLibrary>();
}

}  // namespace nuvrel::platform
