#include "platform/linux/secret_service_keychain.h"

#include <libsecret/secret.h>

#include <memory>

#include "base/shared_library.h"

namespace nuvrel::platform {

namespace {

// libsecret, opened on the first use of the key store rather than at every start. The variadic
// calls of its API have "v" forms that take a table of attributes instead.
struct SecretLibrary {
    SecretLibrary() : library("libsecret-1.so.0") {
        library.resolve(serviceGet, "secret_service_get_sync");
        library.resolve(serviceSearch, "secret_service_search_sync");
        library.resolve(itemSecret, "secret_item_get_secret");
        library.resolve(itemLocked, "secret_item_get_locked");
        library.resolve(valueGet, "secret_value_get");
        library.resolve(valueUnref, "secret_value_unref");
        library.resolve(passwordStore, "secret_password_storev_sync");
        library.resolve(passwordClear, "secret_password_clearv_sync");
    }

    base::SharedLibrary library;
    decltype(&::secret_service_get_sync) serviceGet = nullptr;
    decltype(&::secret_service_search_sync) serviceSearch = nullptr;
    decltype(&::secret_item_get_secret) itemSecret = nullptr;
    decltype(&::secret_item_get_locked) itemLocked = nullptr;
    decltype(&::secret_value_get) valueGet = nullptr;
    decltype(&::secret_value_unref) valueUnref = nullptr;
    decltype(&::secret_password_storev_sync) passwordStore = nullptr;
    decltype(&::secret_password_clearv_sync) passwordClear = nullptr;
};

// Throws base::SharedLibraryError where libsecret is not installed (a later call tries again).
const SecretLibrary& secretLibrary() {
    return base::openedOnce<SecretLibrary>();
}

struct HashTableUnref {
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};

// The item's attributes; the table borrows the texts, which outlive it.
std::unique_ptr<GHashTable, HashTableUnref> attributes(const std::string& service,
                                                       const std::string& account) {
    std::unique_ptr<GHashTable, HashTableUnref> table(g_hash_table_new(g_str_hash, g_str_equal));
    g_hash_table_insert(table.get(), const_cast<char*>("service"),
                        const_cast<char*>(service.c_str()));
    g_hash_table_insert(table.get(), const_cast<char*>("account"),
                        const_cast<char*>(account.c_str()));
    return table;
}

// A temporary's text would be gone before the table is read.
void attributes(std::string&&, const std::string&) = delete;

const SecretSchema* schema() {
    static const SecretSchema value = {"com.nuvrel.spotlight",
                                       SECRET_SCHEMA_DONT_MATCH_NAME,
                                       {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                                       0,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr};
    return &value;
}

struct ErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
using ErrorPtr = std::unique_ptr<GError, ErrorFree>;

std::string message(const GError* error) {
    return error && error->message ? error->message : "no answer";
}

}  // namespace

std::optional<std::string> SecretServiceKeychain::secret(std::string_view key) const {
    const std::string account(key);
    const SecretLibrary* api = nullptr;
    try {
        api = &secretLibrary();
    } catch (const base::SharedLibraryError& missing) {
        diagnostics_.event("key store unavailable (" + missing.description() +
                           ") — Firecrawl is left out of web search");
        return std::nullopt;
    }
    GError* raw = nullptr;
    // SECRET_SERVICE_NONE and a search without SECRET_SEARCH_UNLOCK: a locked collection
    // gives its items without their secrets, and nothing ever prompts.
    SecretService* service = api->serviceGet(SECRET_SERVICE_NONE, nullptr, &raw);
    ErrorPtr error(raw);
    if (!service) {
        diagnostics_.event("key store unavailable (" + message(error.get()) +
                           ") — Firecrawl is left out of web search");
        return std::nullopt;
    }
    const std::string serviceText(serviceName);
    const auto query = attributes(serviceText, account);
    raw = nullptr;
    GList* items = api->serviceSearch(service, schema(), query.get(), SECRET_SEARCH_LOAD_SECRETS,
                                      nullptr, &raw);
    error.reset(raw);
    g_object_unref(service);
    if (error) {
        diagnostics_.event("key store unavailable (" + message(error.get()) +
                           ") — Firecrawl is left out of web search");
        return std::nullopt;
    }
    std::optional<std::string> found;
    bool locked = false;
    for (GList* item = items; item; item = item->next) {
        auto* secretItem = static_cast<SecretItem*>(item->data);
        SecretValue* value = api->itemSecret(secretItem);
        if (!value) {
            locked = locked || api->itemLocked(secretItem);
            continue;
        }
        if (!found) {
            gsize length = 0;
            const gchar* bytes = api->valueGet(value, &length);
            found = std::string(bytes, length);
        }
        api->valueUnref(value);
    }
    g_list_free_full(items, g_object_unref);
    if (!found && locked)
        diagnostics_.event("key store is locked — Firecrawl is left out of web search");
    return found;
}

void SecretServiceKeychain::setSecret(std::string_view key, std::optional<std::string> value) {
    const std::string account(key);
    const std::string service(serviceName);
    const SecretLibrary* api = nullptr;
    try {
        api = &secretLibrary();
    } catch (const base::SharedLibraryError& missing) {
        throw app::KeychainError(missing.description());
    }
    const auto item = attributes(service, account);
    GError* raw = nullptr;
    if (value) {
        const std::string label = "Nuvrel " + account;
        api->passwordStore(schema(), item.get(), SECRET_COLLECTION_DEFAULT, label.c_str(),
                           value->c_str(), nullptr, &raw);
    } else {
        api->passwordClear(schema(), item.get(), nullptr, &raw);
    }
    ErrorPtr error(raw);
    if (error) throw app::KeychainError(message(error.get()));
}

}  // namespace nuvrel::platform
