#pragma once
// Every user-visible text of the program, one constant record per interface language.
// A field has no default value: a language record that leaves one out does not compile.

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "core/app_language.h"

namespace nuvrel::core {

// A text that must be given when a language record is built.
struct LocalizedText : std::string {
    LocalizedText() = delete;
    LocalizedText(const char* text) : std::string(text) {}  // NOLINT: literal tables
};

// A list of texts that must be given when a language record is built.
struct LocalizedList : std::vector<std::string> {
    LocalizedList() = delete;
    LocalizedList(std::initializer_list<std::string> items) : std::vector<std::string>(items) {}
};

// The fields in declared order; kept in one list so that tests can walk every field.
#define NUVREL_LOCALIZED_FIELDS(TEXT, LIST)           \
    TEXT(placeholder)                                 \
    TEXT(thinkingLabel)                               \
    TEXT(settingsTitle)                               \
    TEXT(appearanceLabel)                             \
    TEXT(appearanceHint)                              \
    TEXT(languageLabel)                               \
    TEXT(languageHint)                                \
    TEXT(hotkeyLabel)                                 \
    TEXT(hotkeyHint)                                  \
    TEXT(networkFeaturesLabel)                        \
    TEXT(networkFeaturesHint)                         \
    TEXT(memorySavingModeLabel)                       \
    TEXT(memorySavingModeHint)                        \
    TEXT(modelUpdateCheckLabel)                       \
    TEXT(modelUpdateCheckHint)                        \
    TEXT(modelUpdateAvailableTemplate)                \
    TEXT(modelUpdateUpToDateMessage)                  \
    TEXT(modelUpdateNeedsAppUpdateMessage)            \
    TEXT(modelUpdateCheckNowLabel)                    \
    TEXT(toggleOnLabel)                               \
    TEXT(toggleOffLabel)                              \
    TEXT(modelLabel)                                  \
    TEXT(modelHint)                                   \
    TEXT(settingsLabel)                               \
    TEXT(lightThemeLabel)                             \
    TEXT(darkThemeLabel)                              \
    LIST(sugg)                                        \
    TEXT(llmUnavailableMessage)                       \
    TEXT(llmUnavailableRecovery)                      \
    TEXT(inputTooLongMessage)                         \
    TEXT(inputTooLongRecovery)                        \
    TEXT(llmUnavailableDownloadingTemplate)           \
    TEXT(modelDownloadingLabel)                       \
    TEXT(networkFeaturesOfflineMessage)               \
    TEXT(networkFeaturesOfflineRecovery)              \
    TEXT(missingSlotTemplate)                         \
    TEXT(capabilityUnavailableMessage)                \
    TEXT(webAnswerHeaderTitle)                        \
    TEXT(webAnswerSummarizedBy)                       \
    TEXT(webAnswerSummarizedByTemplate)               \
    TEXT(webAnswerSourcesLabel)                       \
    TEXT(webAnswerExtractiveSourceLabel)              \
    TEXT(webAnswerOpenInBrowser)                      \
    TEXT(webAnswerFallbackNotice)                     \
    TEXT(webSearchNetworkFailureMessage)              \
    TEXT(webSearchNetworkFailureRecovery)             \
    TEXT(webSearchBlockedMessage)                     \
    TEXT(webSearchBlockedRecovery)                    \
    TEXT(finderHeaderTitle)                           \
    TEXT(finderDocumentsFoundTemplate)                \
    TEXT(finderNoMatchTemplate)                       \
    TEXT(finderLimitedScopeHint)                      \
    TEXT(finderRevealInFinder)                        \
    TEXT(finderSearchAllDocuments)                    \
    TEXT(finderDocumentsFoundSingular)                \
    TEXT(finderSearchStartFailedMessage)              \
    TEXT(finderSearchTimedOutMessage)                 \
    TEXT(modelAddMenuItem)                            \
    TEXT(modelInstallNotGGUFMessage)                  \
    TEXT(modelInstallDuplicateMessage)                \
    TEXT(modelInstallFailedMessage)                   \
    TEXT(modelCuratedSectionTitle)                    \
    TEXT(modelCuratedInstalledLabel)                  \
    TEXT(modelCuratedNotInstalledMessage)             \
    TEXT(modelCuratedInstallButtonLabel)              \
    TEXT(modelCuratedInstallingLabel)                 \
    TEXT(modelNotInstalledYetLabel)                   \
    TEXT(modelSwitchFailedMessage)                    \
    TEXT(modelRemoveMenuItem)                         \
    TEXT(modelRemoveCurrentlySelectedMessage)         \
    TEXT(modelRemoveFailedMessage)                    \
    TEXT(modelRecommendedBadge)                       \
    TEXT(modelInUseBadge)                             \
    TEXT(modelSelectButtonLabel)                      \
    TEXT(modelCustomFileTrait)                        \
    TEXT(modelTraitSummaryModel)                      \
    TEXT(modelTraitFastLight)                         \
    TEXT(modelTraitMoreAccurate)                      \
    TEXT(modelTraitLargerHeavier)                     \
    TEXT(calendarHeaderTitle)                         \
    TEXT(calendarNoEventsMessage)                     \
    TEXT(calendarEventAddedLabel)                     \
    TEXT(calendarOpenCalendarFooter)                  \
    TEXT(calendarTodayLabel)                          \
    TEXT(calendarTomorrowLabel)                       \
    TEXT(calendarDayAfterTomorrowLabel)               \
    TEXT(calendarYesterdayLabel)                      \
    TEXT(calendarThisWeekLabel)                       \
    TEXT(calendarNextWeekLabel)                       \
    TEXT(calendarThisWeekendLabel)                    \
    TEXT(calendarNextWeekendLabel)                    \
    TEXT(calendarThisMonthLabel)                      \
    TEXT(calendarNextMonthLabel)                      \
    TEXT(calendarPermissionTitle)                     \
    TEXT(calendarPermissionMessage)                   \
    TEXT(calendarAllDayLabel)                         \
    TEXT(permissionGenericTitleTemplate)              \
    TEXT(permissionGenericMessageTemplate)            \
    TEXT(openSystemSettingsButtonLabel)               \
    TEXT(contactsPermissionTitle)                     \
    TEXT(contactsPermissionMessage)                   \
    TEXT(automationPermissionTitle)                   \
    TEXT(automationPermissionMessage)                 \
    TEXT(musicHeaderTitle)                            \
    TEXT(musicNowPlayingLabel)                        \
    TEXT(musicPausedLabel)                            \
    TEXT(musicNoResultsHeaderSubtitle)                \
    TEXT(musicOpenMusicFooter)                        \
    TEXT(musicPlaySimilarFooter)                      \
    TEXT(musicNoMatchTemplate)                        \
    TEXT(musicAutomationFailedMessage)                \
    TEXT(messageHeaderTitle)                          \
    TEXT(messageDraftReadyLabel)                      \
    TEXT(messageChannelMailLabel)                     \
    TEXT(messageSendButtonLabel)                      \
    TEXT(messageEditButtonLabel)                      \
    TEXT(messageDoneEditingButtonLabel)               \
    TEXT(messageRecipientResolvingLabel)              \
    TEXT(messageRecipientMultipleMatchesLabel)        \
    TEXT(messageRecipientNotFoundMessage)             \
    TEXT(messageRecipientManualPlaceholder)           \
    TEXT(messageRecipientUseManualButtonLabel)        \
    TEXT(messageSendingLabel)                         \
    TEXT(messageDeliveredTemplate)                    \
    TEXT(messageOpenedInMailTemplate)                 \
    TEXT(messageSendFailedMessage)                    \
    TEXT(quitMenuItemLabel)                           \
    TEXT(errorRetryButtonLabel)                       \
    TEXT(timerHeaderTitle)                            \
    TEXT(timerStartedBodyTemplate)                    \
    TEXT(timerNotificationTitle)                      \
    TEXT(timerNotificationBodyTemplate)               \
    TEXT(notificationsPermissionTitle)                \
    TEXT(notificationsPermissionMessage)              \
    TEXT(remindersPermissionTitle)                    \
    TEXT(remindersPermissionMessage)                  \
    TEXT(reminderHeaderTitle)                         \
    TEXT(reminderSetWithTimeTemplate)                 \
    TEXT(reminderSetNoTimeTemplate)                   \
    TEXT(chainHeaderTitle)                            \
    TEXT(chainRunningSubtitleTemplate)                \
    TEXT(chainRunningProgressTemplate)                \
    TEXT(chainDoneSubtitleTemplate)                   \
    TEXT(chainStepRunningLabel)                       \
    TEXT(chainStepNeedsPermissionLabel)               \
    TEXT(chainStepDoneLabel)                          \
    TEXT(helpHeaderTitle)                             \
    TEXT(helpSubtitle)                                \
    LIST(helpItems)                                   \
    TEXT(windowHeaderTitle)                           \
    TEXT(windowActionLeftHalfLabel)                   \
    TEXT(windowActionRightHalfLabel)                  \
    TEXT(windowActionMaximizeLabel)                   \
    TEXT(windowActionCenterLabel)                     \
    TEXT(windowNoTargetMessage)                       \
    TEXT(windowMoveFailedMessage)                     \
    TEXT(windowActionTopHalfLabel)                    \
    TEXT(windowActionBottomHalfLabel)                 \
    TEXT(windowActionQuarterLabel)                    \
    TEXT(windowActionNextDisplayLabel)                \
    TEXT(windowOnlyOneDisplayMessage)                 \
    TEXT(windowNeedsX11Message)                       \
    TEXT(systemToolMissingTemplate)                   \
    TEXT(accessibilityPermissionTitle)                \
    TEXT(accessibilityPermissionMessage)              \
    TEXT(locationPermissionTitle)                     \
    TEXT(locationPermissionMessage)                   \
    TEXT(hotkeyRecordingPrompt)                       \
    TEXT(hotkeyModifierRequiredMessage)               \
    TEXT(hotkeyRegistrationFailedMessage)             \
    TEXT(onboardingWindowTitle)                       \
    TEXT(onboardingTitle)                             \
    TEXT(onboardingSubtitle)                          \
    TEXT(onboardingFilesTitle)                        \
    TEXT(onboardingFilesDescription)                  \
    TEXT(onboardingCalendarTitle)                     \
    TEXT(onboardingCalendarDescription)               \
    TEXT(onboardingContactsTitle)                     \
    TEXT(onboardingContactsDescription)               \
    TEXT(onboardingMessagesTitle)                     \
    TEXT(onboardingMessagesDescription)               \
    TEXT(onboardingMailTitle)                         \
    TEXT(onboardingMailDescription)                   \
    TEXT(onboardingMusicTitle)                        \
    TEXT(onboardingMusicDescription)                  \
    TEXT(onboardingNotificationsTitle)                \
    TEXT(onboardingNotificationsDescription)          \
    TEXT(onboardingRemindersTitle)                    \
    TEXT(onboardingRemindersDescription)              \
    TEXT(onboardingAllowButtonLabel)                  \
    TEXT(onboardingAllowedLabel)                      \
    TEXT(onboardingFooterPrivacyNote)                 \
    TEXT(onboardingSetUpLaterButtonLabel)             \
    TEXT(onboardingContinueButtonLabel)               \
    TEXT(permissionsSetupMenuItemLabel)               \
    TEXT(settingsTabGeneralLabel)                     \
    TEXT(settingsTabModelLabel)                       \
    TEXT(settingsTabSearchLabel)                      \
    TEXT(settingsTabPermissionsLabel)                 \
    TEXT(settingsTabCreditsLabel)                     \
    TEXT(creditsVersionLabel)                         \
    TEXT(appUpdateCheckLabel)                         \
    TEXT(appUpdateCheckHint)                          \
    TEXT(appUpdateCheckNowLabel)                      \
    TEXT(creditsReportIssueLabel)                     \
    TEXT(creditsReportIssueHint)                      \
    TEXT(creditsSuggestLabel)                         \
    TEXT(creditsSuggestHint)                          \
    TEXT(creditsOpenSourceLabel)                      \
    TEXT(creditsOpenSourceHint)                       \
    TEXT(creditsModelSourceLabel)                     \
    TEXT(creditsModelSourceHint)                      \
    TEXT(creditsPrivacyPolicyLabel)                   \
    TEXT(creditsThanksNote)                           \
    TEXT(searchTabFallbackChainNotice)                \
    TEXT(searchTabFallbackChainNoticeWithFirecrawl)   \
    TEXT(searchTabEndpointLabel)                      \
    TEXT(searchTabEndpointHint)                       \
    TEXT(searchTabEndpointPlaceholder)                \
    TEXT(searchTabEndpointInvalidMessage)             \
    TEXT(searchTabEndpointAppliesNextLaunchNotice)    \
    TEXT(searchTabFirecrawlLabel)                     \
    TEXT(searchTabFirecrawlHint)                      \
    TEXT(searchTabFirecrawlPlaceholderEmpty)          \
    TEXT(searchTabFirecrawlPlaceholderSaved)          \
    TEXT(permissionsTabReopenButtonLabel)             \
    TEXT(permissionsTabSummaryTitle)                  \
    TEXT(permissionsTabNotGrantedLabel)               \
    TEXT(calculatorHeaderTitle)                       \
    TEXT(calculatorResultSubtitle)                    \
    TEXT(currencyHeaderTitle)                         \
    TEXT(currencyResultSubtitle)                      \
    TEXT(currencyNetworkFailureMessage)               \
    TEXT(weatherHeaderTitle)                          \
    TEXT(weatherResultSubtitle)                       \
    TEXT(weatherNetworkFailureMessage)                \
    TEXT(weatherHighLabel)                            \
    TEXT(weatherLowLabel)                             \
    TEXT(weatherSourceAppleLabel)                     \
    TEXT(weatherSourceOpenMeteoLabel)                 \
    TEXT(weatherCurrentLocationLabel)                 \
    TEXT(weatherLocationUnavailableMessage)           \
    TEXT(appLaunchHeaderTitle)                        \
    TEXT(appLaunchedTemplate)                         \
    TEXT(documentSummaryHeaderTitle)                  \
    TEXT(documentSummarizeUnreadableMessage)          \
    TEXT(documentSummarizeFailedMessage)              \
    TEXT(systemCommandHeaderTitle)                    \
    TEXT(clipboardHistoryHeaderTitle)                 \
    TEXT(deleteFileHeaderTitle)                       \
    TEXT(deleteFileConfirmMessageTemplate)            \
    TEXT(deleteFileConfirmButtonLabel)                \
    TEXT(deleteFileCancelButtonLabel)                 \
    TEXT(deleteFileDeletingLabel)                     \
    TEXT(deleteFileDeletedTemplate)                   \
    TEXT(deleteFileFailedMessage)                     \
    TEXT(networkActivitySectionTitle)                 \
    TEXT(networkActivitySummaryTemplate)              \
    TEXT(networkActivityOfflineMessage)               \
    TEXT(networkActivitySummaryAtCapTemplate)         \
    TEXT(networkActivityRevealLogLabel)               \
    TEXT(networkActivityExplainer)                    \
    TEXT(networkActivityLocalhostNote)                \
    TEXT(networkActivityNoEntriesLabel)               \
    TEXT(networkActivityRecentLabel)                  \
    TEXT(networkActivityPurposeWebSearchLabel)        \
    TEXT(networkActivityPurposeWeatherLabel)          \
    TEXT(networkActivityPurposeCurrencyLabel)         \
    TEXT(networkActivityPurposeModelDownloadLabel)    \
    TEXT(networkActivityPurposeWikipediaLabel)        \
    TEXT(networkActivityPurposeModelUpdateCheckLabel) \
    TEXT(networkActivityPurposeGeocodingLabel)        \
    TEXT(networkActivityPurposeAppUpdateCheckLabel)   \
    TEXT(modelReadyNotificationTitle)                 \
    TEXT(modelReadyNotificationBodyTemplate)          \
    TEXT(firstRunAhaCardTitle)                        \
    TEXT(firstRunAhaCardQuery)                        \
    TEXT(diagnosticsButtonLabel)                      \
    TEXT(diagnosticsButtonHint)                       \
    TEXT(diagnosticsCopiedFeedback)                   \
    TEXT(diagnosticsReportTitle)                      \
    TEXT(diagnosticsPrivacyNotice)                    \
    TEXT(diagnosticsGeneratedAtLabel)                 \
    TEXT(diagnosticsSectionSystem)                    \
    TEXT(diagnosticsAppVersionLabel)                  \
    TEXT(diagnosticsOSVersionLabel)                   \
    TEXT(diagnosticsChipLabel)                        \
    TEXT(diagnosticsChipAppleSiliconValue)            \
    TEXT(diagnosticsChipNotAppleSiliconValue)         \
    TEXT(diagnosticsRAMLabel)                         \
    TEXT(diagnosticsSectionModel)                     \
    TEXT(diagnosticsInstalledModelsLabel)             \
    TEXT(diagnosticsNoModelsInstalledValue)           \
    TEXT(diagnosticsSelectedModelLabel)               \
    TEXT(diagnosticsModelsDirectoryLabel)             \
    TEXT(diagnosticsSectionServer)                    \
    TEXT(diagnosticsServerBinaryLabel)                \
    TEXT(diagnosticsServerBinaryFoundTemplate)        \
    TEXT(diagnosticsServerBinaryKindBundled)          \
    TEXT(diagnosticsServerBinaryKindHomebrew)         \
    TEXT(diagnosticsServerBinaryKindPath)             \
    TEXT(diagnosticsServerBinaryNotFoundValue)        \
    TEXT(diagnosticsPortRouterLabel)                  \
    TEXT(diagnosticsPortSummaryLabel)                 \
    TEXT(diagnosticsPortHealthyValue)                 \
    TEXT(diagnosticsPortUnhealthyValue)               \
    TEXT(diagnosticsRunningServerPIDsLabel)           \
    TEXT(diagnosticsNoServerRunningValue)             \
    TEXT(diagnosticsSectionNetwork)                   \
    TEXT(diagnosticsNoNetworkActivityValue)           \
    TEXT(diagnosticsSectionPermissions)               \
    TEXT(diagnosticsAccessibilityLabel)               \
    TEXT(diagnosticsNotificationsLabel)               \
    TEXT(diagnosticsCheckFailedTemplate)              \
    TEXT(noteHeaderTitle)                             \
    TEXT(noteSavedLabel)                              \
    TEXT(noteSaveFailedMessage)                       \
    TEXT(translateHeaderTitle)                        \
    TEXT(translateTranslatedByTemplate)               \
    TEXT(translateFailedMessage)                      \
    TEXT(slotNameRecipient)                           \
    TEXT(slotNameBody)                                \
    TEXT(slotNameContent)                             \
    TEXT(messageSendExampleRecovery)                  \
    TEXT(helpHintRecovery)                            \
    TEXT(helpMenuItemLabel)                           \
    TEXT(genericErrorMessage)                         \
    TEXT(messageSendFailedRecovery)                   \
    TEXT(automationFailedRecovery)                    \
    TEXT(webAnswerNoResultsMessage)                   \
    TEXT(netlogLocalCallsNote)                        \
    TEXT(netlogLogFileTemplate)                       \
    TEXT(confirmPlanPrompt)                           \
    TEXT(confirmDeleteRowPromptTemplate)              \
    TEXT(confirmNotCarriedOutMessage)                 \
    TEXT(notificationServiceUnavailableMessage)       \
    TEXT(notificationServiceUnavailableRecovery)      \
    TEXT(modelDownloadFailedMessage)                  \
    TEXT(modelChecksumMismatchTemplate)               \
    TEXT(modelNotEnoughSpaceTemplate)                 \
    TEXT(modelInstallHintLine)                        \
    TEXT(modelInstalledTemplate)                      \
    TEXT(modelInstallStoppedMessage)                  \
    TEXT(modelResumingTemplate)                       \
    TEXT(modelUnknownNameTemplate)                    \
    TEXT(modelNowUsingTemplate)                       \
    TEXT(modelStillUsingTemplate)                     \
    TEXT(modelRemovedTemplate)                        \
    TEXT(modelRemoveForceHint)                        \
    TEXT(modelFileNotInstalledTemplate)               \
    TEXT(modelUpdateCheckFailedMessage)               \
    TEXT(modelUpdateInstallHintTemplate)              \
    TEXT(modelRoleRouterLabel)                        \
    TEXT(modelRoleSummaryLabel)                       \
    TEXT(messageNoPhoneDeviceMessage)                 \
    TEXT(messageNoMailClientMessage)                  \
    TEXT(musicNoPlayerMessage)                        \
    TEXT(musicCannotSearchMessage)                    \
    TEXT(messageRecipientAmbiguousTemplate)           \
    TEXT(messageRecipientChoicePromptTemplate)        \
    TEXT(settingsUnknownKeyTemplate)                  \
    TEXT(settingsInvalidValueTemplate)                \
    TEXT(keyStoreUnavailableMessage)                  \
    TEXT(diagnosticsPermissionAvailableValue)         \
    TEXT(diagnosticsPermissionUnavailableValue)       \
    TEXT(diagnosticsNoClipboardMessage)

struct LocalizedStrings {
#define NUVREL_DECLARE_TEXT(name) LocalizedText name;
#define NUVREL_DECLARE_LIST(name) LocalizedList name;
    NUVREL_LOCALIZED_FIELDS(NUVREL_DECLARE_TEXT, NUVREL_DECLARE_LIST)
#undef NUVREL_DECLARE_TEXT
#undef NUVREL_DECLARE_LIST

    // The record of a language; each is built once on first use and never copied per use.
    static const LocalizedStrings& strings(AppLanguage language);
    static const LocalizedStrings& en();
    static const LocalizedStrings& ko();
    static const LocalizedStrings& zh();
    static const LocalizedStrings& ja();

    // Calls onText(name, text) for every text field and onList(name, list) for every list,
    // in declared order.
    template <class OnText, class OnList>
    void forEachField(OnText&& onText, OnList&& onList) const {
#define NUVREL_VISIT_TEXT(name) \
    onText(std::string_view(#name), static_cast<const std::string&>(name));
#define NUVREL_VISIT_LIST(name) \
    onList(std::string_view(#name), static_cast<const std::vector<std::string>&>(name));
        NUVREL_LOCALIZED_FIELDS(NUVREL_VISIT_TEXT, NUVREL_VISIT_LIST)
#undef NUVREL_VISIT_TEXT
#undef NUVREL_VISIT_LIST
    }

    // Templates filled in: "%@" (or "%1$@", "%2$@") replaced by plain text, "%d" by a number.
    std::string missingSlotMessage(std::string_view label) const;
    std::string timerNotificationBody(std::string_view displayText) const;
    std::string diagnosticsServerBinaryFoundMessage(std::string_view kind,
                                                    std::string_view path) const;
    // Purposes in the network log's order: webSearch, weather, currency, modelDownload,
    // modelUpdateCheck. An index past the end gives the web search label.
    const std::string& networkActivityPurposeLabel(std::size_t purposeIndex) const;
    std::string diagnosticsCheckFailedMessage(std::string_view reason) const;
    // A tool or service that the machine lacks, named.
    std::string systemToolMissingMessage(std::string_view tool) const;
    std::string llmUnavailableDownloadingMessage(int percent) const;
    std::string chainProgressSubtitle(int done, int total) const;
    // The query that the help menu item submits: the language's own word for help.
    std::string helpQuery() const;
};

}  // namespace nuvrel::core
