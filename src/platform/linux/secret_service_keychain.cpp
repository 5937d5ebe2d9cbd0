#include "platform/linux/secret_service_keychain.h"

#include <libsecret/secret.h>

#include <memory>

namespace nuvrel::platform {

namespace {

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
    GError* raw = nullptr;
    // SECRET_SERVICE_NONE and a search without SECRET_SEARCH_UNLOCK: a locked collection
    // gives its items without their secrets, and nothing ever prompts.
    SecretService* service = secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, &raw);
    ErrorPtr error(raw);
    if (!service) {
        diagnostics_.event("key store unavailable (" + message(error.get()) +
                           ") — Firecrawl is left out of web search");
        return std::nullopt;
    }
    GHashTable* attributes = secret_attributes_build(
        schema(), "service", std::string(serviceName).c_str(), "account", account.c_str(), nullptr);
    raw = nullptr;
    GList* items = secret_service_search_sync(service, schema(), attributes,
                                              SECRET_SEARCH_LOAD_SECRETS, nullptr, &raw);
    error.reset(raw);
    g_hash_table_unref(attributes);
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
        SecretValue* value = secret_item_get_secret(secretItem);
        if (!value) {
            locked = locked || secret_item_get_locked(secretItem);
            continue;
        }
        if (!found) {
            gsize length = 0;
            const gchar* bytes = secret_value_get(value, &length);
            found = std::string(bytes, length);
        }
        secret_value_unref(value);
    }
    g_list_free_full(items, g_object_unref);
    if (!found && locked)
        diagnostics_.event("key store is locked — Firecrawl is left out of web search");
    return found;
}

void SecretServiceKeychain::setSecret(std::string_view key, std::optional<std::string> value) {
    const std::string account(key);
    const std::string service(serviceName);
    GError* raw = nullptr;
    if (value) {
        const std::string label = "Nuvrel " + account;
        secret_password_store_sync(schema(), SECRET_COLLECTION_DEFAULT, label.c_str(),
                                   value->c_str(), nullptr, &raw, "service", service.c_str(),
                                   "account", account.c_str(), nullptr);
    } else {
        secret_password_clear_sync(schema(), nullptr, &raw, "service", service.c_str(), "account",
                                   account.c_str(), nullptr);
    }
    ErrorPtr error(raw);
    if (error) throw app::KeychainError(message(error.get()));
}

}  // namespace nuvrel::platform
