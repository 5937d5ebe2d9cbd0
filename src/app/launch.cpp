#include "app/launch.h"

#include <cstdlib>
#include <optional>
#include <string_view>

#include "answers/web_search_capability.h"
#include "app/bus_services_on_first_use.h"
#include "app/information_wiring.h"
#include "app/lazy_llm_runtime.h"
#include "app/lazy_window_system.h"
#include "app/model_backends.h"
#include "app/settings_keys.h"
#include "base/paths.h"
#include "base/sleep.h"
#include "desktop/finder_search_capability.h"
#include "llm/llama_server_backend.h"
#include "llm/managed_llama_backend.h"
#include "llm/model_resolution.h"
#include "personal/calendar_capabilities.h"
#include "personal/message_send_capability.h"
#include "personal/music_play_capability.h"
#include "pipeline/pipeline.h"
#include "pipeline/router_prompt.h"
#include "platform/linux/clipboard_watcher.h"
#include "platform/linux/desktop_applications.h"
#include "platform/linux/desktop_messenger.h"
#include "platform/linux/detached_timer_center.h"
#include "platform/linux/file_walk_search.h"
#include "platform/linux/geoclue_location_provider.h"
#include "platform/linux/live_system_commands.h"
#include "platform/linux/markdown_notes_folder.h"
#include "platform/linux/mpris_player.h"
#include "platform/linux/secret_service_keychain.h"
#include "platform/linux/vcard_folder.h"
#include "platform/linux/vdir_calendar_store.h"
#include "platform/linux/vdir_reminder_store.h"
#include "platform/linux/x11_window_system.h"
#include "platform/live_llm.h"
#include "platform/posix/document_files.h"

namespace nuvrel::app {

LLMRuntime LLMRuntime::make(const SettingsStoring& userDefaults,
                            std::shared_ptr<base::HttpSession> session,
                            const base::Diagnostics& diagnostics, int routerPort) {
    const auto resolved =
        llm::resolveModelPath(userDefaults.string(settingsKey::modelFile), llm::modelsDirectory(),
                              llm::liveFileExists, diagnostics);
    return forModel(userDefaults, resolved.path, resolved.isInterim, std::move(session),
                    diagnostics, routerPort);
}

LLMRuntime LLMRuntime::forModel(const SettingsStoring& userDefaults,
                                const std::filesystem::path& modelPath, bool isInterim,
                                std::shared_ptr<base::HttpSession> session,
                                const base::Diagnostics& diagnostics, int routerPort) {
    const std::string fileName = modelPath.filename().string();
    auto manager = std::make_shared<llm::LlamaServerManager>(
        modelPath, routerPort, session, llm::LlamaServerMode::chat,
        llm::LlamaServerManager::routerContextSize(fileName),
        platform::liveLlamaServerEnvironment(diagnostics));
    LLMRuntime runtime;
    runtime.manager = manager;
    runtime.isInterimModel = isInterim;
    // Both roles talk to the router's server, wherever it listens.
    const auto onRouterPort = [routerPort](llm::LlamaServerBackend backend) {
        backend.baseURL = *base::Url::parse("http://127.0.0.1:" + std::to_string(routerPort));
        return backend;
    };
    runtime.routingBackend = std::make_shared<llm::ManagedLlamaBackend>(
        manager, onRouterPort(llm::LlamaServerBackend::routing(session)), "routing", diagnostics);
    if (userDefaults.string(settingsKey::memorySavingModeEnabled).value_or("0") == "1")
        runtime.summaryIdleStopInterval = memorySavingIdleStopSeconds;
    SummaryBackendChoice summary = resolveSummaryBackend(
        manager, *base::Url::parse("http://127.0.0.1:" + std::to_string(routerPort)),
        llm::modelsDirectory(), runtime.summaryIdleStopInterval, session, diagnostics);
    runtime.summaryBackend = std::move(summary.backend);
    runtime.summaryManager = std::move(summary.manager);
    EmbeddingBackendChoice embedding =
        makeEmbeddingBackend(llm::modelsDirectory(), session, diagnostics);
    runtime.embeddingBackend = std::move(embedding.backend);
    runtime.embeddingManager = std::move(embedding.manager);
    return runtime;
}

void LLMRuntime::stopServers() const {
    if (manager) manager->stop();
    if (summaryManager) summaryManager->stop();
    if (embeddingManager) embeddingManager->stop();
}

namespace {

WebRetrieval makeWebRetrieval(const LaunchSettings& settings,
                              std::shared_ptr<base::HttpSession> session,
                              std::shared_ptr<NetworkActivityLog> log) {
    return WebRetrieval::make(WebRetrievalSettings{.session = std::move(session),
                                                   .log = std::move(log),
                                                   .userDefaults = settings.userDefaults,
                                                   .keychain = settings.keychain,
                                                   .debugBadHost = settings.debugWebBadHost,
                                                   .endpoints = settings.webEndpoints});
}

// The user's calendars, reminders and timers on this machine, made once per process: the
// parsed-file cache and the bus connection serve every run.
struct PersonalData {
    std::shared_ptr<platform::IcsFolderCache> cache;
    std::shared_ptr<SessionBusOnFirstUse> bus;
    base::XdgPaths paths;
    std::filesystem::path helperProgram;
    std::shared_ptr<personal::ClipboardHistoryStore> clipboardHistory;
    // The contacts folder of the settings when the factory was made, read once.
    std::shared_ptr<platform::VCardFolder> contacts;

    static PersonalData make(const base::Diagnostics& diagnostics,
                             const SettingsStoring& defaults) {
        std::error_code error;
        auto self = std::filesystem::read_symlink("/proc/self/exe", error);
        const base::XdgPaths paths = base::XdgPaths::fromEnvironment();
        const std::string contactsFolder =
            defaults.string(settingsKey::contactsFolder).value_or("");
        return {
            std::make_shared<platform::IcsFolderCache>(personal::GregorianCalendar(), diagnostics),
            std::make_shared<SessionBusOnFirstUse>(platform::SessionBus::connect),
            paths,
            self,
            platform::liveClipboardHistoryStore(paths.stateHome),
            std::make_shared<platform::VCardFolder>(contactsFolder.empty()
                                                        ? paths.dataHome / "nuvrel" / "contacts"
                                                        : std::filesystem::path(contactsFolder),
                                                    diagnostics)};
    }
};

void addPersonalData(pipeline::Pipeline& pipeline, const PersonalData& data,
                     const SettingsStoring& defaults) {
    const auto setting = [&](std::string_view key) { return defaults.string(key).value_or(""); };
    pipeline.clock = personal::Clock{};
    pipeline.calendarStore = std::make_shared<platform::VdirCalendarStore>(
        platform::calendarFoldersFromSettings(data.paths.dataHome,
                                              setting(settingsKey::calendarFolders),
                                              setting(settingsKey::newEventCalendarFolder)),
        data.cache);
    const std::string reminders = setting(settingsKey::reminderFolder);
    pipeline.reminderStore = std::make_shared<platform::VdirReminderStore>(
        reminders.empty() ? data.paths.dataHome / "nuvrel" / "reminders" / "personal"
                          : std::filesystem::path(reminders),
        data.cache);
    const std::string notes = setting(settingsKey::notesFolder);
    pipeline.notesCapability = personal::NotesCapability{
        pipeline.language,
        std::make_shared<platform::MarkdownNotesFolder>(
            notes.empty() ? data.paths.dataHome / "nuvrel" / "notes" : std::filesystem::path(notes),
            pipeline.diagnostics),
        pipeline.diagnostics};
    pipeline.clipboardHistoryStore = data.clipboardHistory;
    pipeline.timerCapability = personal::TimerCapability{
        pipeline.language,
        std::make_shared<LazyNotificationCenter>(
            [language = pipeline.language, bus = data.bus,
             folder = data.paths.stateHome / "nuvrel" / "timers", helper = data.helperProgram] {
                return std::make_shared<platform::DetachedTimerCenter>(language, bus->get(), folder,
                                                                       helper);
            })};
}

// Files and applications of this machine, made once per process: the files shown for deletion
// and the application index outlive each run's pipeline.
struct DesktopData {
    desktop::FileServices files;
    std::shared_ptr<platform::DesktopApplications> applications;

    static DesktopData make(const base::Diagnostics& diagnostics) {
        desktop::FileServices files =
            platform::liveFileServices(base::XdgPaths::fromEnvironment().home);
        files.proposals = std::make_shared<desktop::DeletionProposals>();
        return {std::move(files), std::make_shared<platform::DesktopApplications>(diagnostics)};
    }
};

void addDesktop(pipeline::Pipeline& pipeline, const DesktopData& data,
                const platform::SessionBusSource& bus) {
    pipeline.fileServices = data.files;
    // File search asks the desktop's index on the one session bus before it walks.
    pipeline.fileServices.runMetadataQuery =
        platform::liveFileServices(data.files.home, bus).runMetadataQuery;
    pipeline.applications = data.applications;
    pipeline.openURL = [applications = data.applications](const std::string& url) {
        applications->openURL(url);
    };
}

std::shared_ptr<desktop::FinderSearchCapability> finderSearchOf(
    const pipeline::Pipeline& pipeline) {
    auto finder = std::make_shared<desktop::FinderSearchCapability>();
    finder->language = pipeline.language;
    finder->maxResults = 8;
    finder->timeout = 3.0;
    finder->services = pipeline.fileServices;
    finder->clock = pipeline.clock;
    return finder;
}

}  // namespace

AppState::MakePipeline makePipelineFactory(const LaunchSettings& settings) {
    auto session = settings.session ? settings.session : std::make_shared<base::HttpSession>();
    auto log = settings.networkLog ? settings.networkLog : std::make_shared<NetworkActivityLog>();
    return [runtime = settings.runtime, defaults = settings.userDefaults,
            forbidden = settings.networkForbidden, diagnostics = settings.diagnostics,
            debugSlots = settings.debugSlotsLogging, location = settings.locationProvider,
            information =
                makeInformationServices(*settings.userDefaults, session, log, settings.diagnostics),
            web = makeWebRetrieval(settings, session, log),
            personalData = PersonalData::make(settings.diagnostics, *settings.userDefaults),
            windows = std::make_shared<WindowSystemOnFirstUse>([] {
                return std::shared_ptr<desktop::WindowSystem>(platform::X11WindowSystem::connect());
            }),
            desktopData = DesktopData::make(settings.diagnostics)](core::AppLanguage language) {
        auto pipeline = std::make_shared<pipeline::Pipeline>();
        auto routing =
            std::make_shared<LazyRuntimeBackend>(runtime, LazyRuntimeBackend::Role::routing);
        auto summary =
            std::make_shared<LazyRuntimeBackend>(runtime, LazyRuntimeBackend::Role::summary);
        pipeline->router.backend = routing;
        pipeline->router.promptFlags = [runtime] {
            const LLMRuntime& made = runtime->get();
            return pipeline::Router::PromptFlags{
                made.isInterimModel, pipeline::RouterPrompt::supportsAppLaunch(
                                         made.manager->modelPath().filename().string())};
        };
        pipeline->language = language;
        pipeline->summarizer = summary;
        pipeline->diagnostics = diagnostics;
        pipeline->debugSlotsLogging = debugSlots;
        auto webSearch = std::make_shared<answers::WebSearchCapability>();
        webSearch->language = language;
        webSearch->transport = web.transport;
        webSearch->summarizer = summary;
        webSearch->pageFetcher = web.pageFetcher;
        webSearch->diagnostics = diagnostics;
        webSearch->embeddingBackend = std::make_shared<LazyEmbeddingProvider>(runtime);
        addPersonalData(*pipeline, personalData, *defaults);
        const platform::SessionBusSource bus = [lazy = personalData.bus] { return lazy->get(); };
        addDesktop(*pipeline, desktopData, bus);
        auto calendarQuery = std::make_shared<personal::CalendarQueryCapability>(
            language, pipeline->calendarStore, pipeline->clock);
        auto messages = std::make_shared<personal::MessageSendCapability>(
            language, personalData.contacts,
            std::make_shared<LazyMessageSending>([bus = personalData.bus] {
                return std::make_shared<platform::DesktopMessenger>(
                    bus->get(), platform::DesktopMessenger::liveOpenURI);
            }),
            diagnostics);
        auto music = std::make_shared<personal::MusicPlayCapability>(
            language, std::make_shared<LazyMediaPlayer>([bus = personalData.bus] {
                return std::make_shared<platform::MprisPlayer>(bus->get());
            }),
            [](std::chrono::milliseconds wait) { base::liveSleep(wait); }, diagnostics);
        pipeline->registry = core::CapabilityRegistry(
            {webSearch, calendarQuery, messages, music, finderSearchOf(*pipeline)});
        pipeline->informationServices = information;
        pipeline->weatherLocationProvider = location;
        pipeline->findDocument = [](std::string_view name) {
            return platform::liveFindFile(name, platform::DocumentSearch::userFolders());
        };
        pipeline->extractDocumentText = platform::liveExtractText;
        platform::LiveSystemCommandSettings systemCommands;
        systemCommands.language = language;
        systemCommands.sessionBus = bus;
        pipeline->systemCommands = platform::liveSystemCommandOperations(systemCommands);
        pipeline->windowSystem = std::make_shared<LazyWindowSystem>(windows, language);
        // Only an explicit "0" turns the network features off.
        pipeline->networkFeaturesEnabled =
            !forbidden &&
            defaults->string(settingsKey::networkFeaturesEnabled).value_or("1") != "0";
        return std::shared_ptr<const pipeline::PipelineRunning>(std::move(pipeline));
    };
}

namespace {

std::optional<std::string> variable(const char* const* environment, std::string_view name) {
    for (auto entry = environment; entry && *entry; ++entry) {
        std::string_view text(*entry);
        if (text.size() > name.size() && text.substr(0, name.size()) == name &&
            text[name.size()] == '=') {
            return std::string(text.substr(name.size() + 1));
        }
    }
    return std::nullopt;
}

// "ko_KR.UTF-8@euro" → "ko-KR"; nothing for "C", "POSIX" and empty values.
std::optional<std::string> languageTag(std::string_view locale) {
    locale = locale.substr(0, locale.find_first_of(".@"));
    if (locale.empty() || locale == "C" || locale == "POSIX") return std::nullopt;
    std::string tag(locale);
    for (char& c : tag) {
        if (c == '_') c = '-';
    }
    return tag;
}

}  // namespace

std::vector<std::string> preferredLanguagesFromEnvironment(const char* const* environment) {
    std::vector<std::string> tags;
    if (auto list = variable(environment, "LANGUAGE")) {
        std::string_view rest(*list);
        while (!rest.empty()) {
            const auto colon = rest.find(':');
            if (auto tag = languageTag(rest.substr(0, colon))) tags.push_back(*tag);
            rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
        }
    }
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (auto value = variable(environment, name); value && !value->empty()) {
            if (auto tag = languageTag(*value)) tags.push_back(*tag);
            break;
        }
    }
    return tags;
}

LaunchSettings liveLaunchSettings(std::shared_ptr<SettingsStoring> userDefaults,
                                  std::shared_ptr<base::HttpSession> session, int routerPort,
                                  bool networkForbidden, const base::Diagnostics& diagnostics) {
    auto runtime =
        std::make_shared<LazyLLMRuntime>([userDefaults, session, diagnostics, routerPort] {
            return LLMRuntime::make(*userDefaults, session, diagnostics, routerPort);
        });
    LaunchSettings launch{userDefaults, std::move(runtime), networkForbidden};
    launch.networkLog = std::make_shared<NetworkActivityLog>(
        std::chrono::system_clock::now, base::XdgPaths::fromEnvironment().networkActivityFile());
    launch.keychain = std::make_shared<platform::SecretServiceKeychain>(diagnostics);
    launch.session = std::move(session);
    launch.debugWebBadHost = std::getenv("NUVREL_DEBUG_WEB_BAD_HOST") != nullptr;
    launch.debugSlotsLogging = std::getenv("NUVREL_DEBUG_QUERY") != nullptr;
    launch.diagnostics = diagnostics;
    launch.locationProvider = std::make_shared<platform::GeoClueLocationProvider>();
    return launch;
}

}  // namespace nuvrel::app
