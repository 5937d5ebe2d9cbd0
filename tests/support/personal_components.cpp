#include "support/personal_components.h"

#include <gio/gio.h>

#include <cstdint>
#include <fstream>

namespace nuvrel::test {

namespace {

constexpr const char* daemonXML =
    "<node><interface name='org.kde.kdeconnect.daemon'><method name='devices'>"
    "<arg type='b' direction='in'/><arg type='b' direction='in'/>"
    "<arg type='as' direction='out'/></method></interface></node>";
constexpr const char* smsXML =
    "<node><interface name='org.kde.kdeconnect.device.sms'><method name='sendSms'>"
    "<arg type='av' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='av' direction='in'/></method></interface></node>";

}  // namespace

void writeAddressBook(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "a.vcf")
        << "BEGIN:VCARD\nVERSION:3.0\nFN:김철수\nN:김;철수;;;\n"
           "TEL;TYPE=cell:010-1111-\n 2222\nTEL:02-555-0000\nEND:VCARD\n";
    std::ofstream(folder / "b.vcf") << "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:철수\r\n"
                                       "TEL;VALUE=uri;TYPE=\"voice,cell\":tel:+82-10-3333-4444\r\n"
                                       "END:VCARD\r\n";
    std::ofstream(folder / "c.vcf")
        << "BEGIN:VCARD\r\nVERSION:4.0\r\nN:Lee;Jamie;;;\r\n"
           "NICKNAME:Jay,JJ\r\nitem1.EMAIL;TYPE=work:jamie@example.org\r\n"
           "TEL:+1 555 0100\r\nEND:VCARD\r\n"
           "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:Sam Park\r\n"
           "EMAIL:sam@example.com\r\nEND:VCARD\r\n";
    std::ofstream(folder / "d.vcf") << "BEGIN:VCARD\nVERSION:3.0\nFN:No Handle\nEND:VCARD\n";
}

void writeTone(const std::filesystem::path& path, int seconds) {
    const std::uint32_t rate = 8000, samples = rate * seconds;
    std::ofstream out(path, std::ios::binary);
    const auto put = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) out.put(static_cast<char>((value >> (8 * i)) & 0xff));
    };
    out << "RIFF";
    put(36 + samples, 4);
    out << "WAVEfmt ";
    put(16, 4), put(1, 2), put(1, 2), put(rate, 4), put(rate, 4), put(1, 2), put(8, 2);
    out << "data";
    put(samples, 4);
    for (std::uint32_t i = 0; i < samples; ++i) out.put(static_cast<char>(i % 32 < 16 ? 96 : 160));
}

std::unique_ptr<HelperProcess> startMprisPlayer(const std::vector<std::filesystem::path>& files) {
    std::vector<std::string> argv{
        "/usr/bin/mpv", "--no-config", "--script=/etc/mpv/scripts/mpris.so",
        "--ao=null",    "--vo=null",   "--really-quiet"};
    for (const auto& file : files) argv.push_back(file.string());
    return std::make_unique<HelperProcess>(argv);
}

KdeConnectStandIn::KdeConnectStandIn(const std::string& busAddress)
    : service_(std::make_unique<BusStandIn>(
          busAddress, "org.kde.kdeconnect",
          std::map<std::string, std::string>{{"/modules/kdeconnect", daemonXML},
                                             {"/modules/kdeconnect/devices/phone1/sms", smsXML}},
          [this](const std::string& path, const std::string& method,
                 GVariant* parameters) -> GVariant* {
              std::lock_guard guard(mutex_);
              if (method == "devices") {
                  const char* none[] = {nullptr};
                  const char* one[] = {"phone1", nullptr};
                  return g_variant_new("(^as)", reachable_ ? one : none);
              }
              GVariant* addresses = g_variant_get_child_value(parameters, 0);
              GVariant* first = g_variant_get_child_value(addresses, 0);
              GVariant* address = g_variant_get_variant(first);
              const char* number = nullptr;
              const char* text = nullptr;
              g_variant_get(address, "(&s)", &number);
              g_variant_get_child(parameters, 1, "&s", &text);
              sent_.push_back(path + "|" + number + "|" + text);
              g_variant_unref(address);
              g_variant_unref(first);
              g_variant_unref(addresses);
              return nullptr;
          })) {}

std::vector<std::string> KdeConnectStandIn::sent() const {
    std::lock_guard guard(mutex_);
    return sent_;
}

void KdeConnectStandIn::setReachable(bool reachable) {
    std::lock_guard guard(mutex_);
    reachable_ = reachable;
}

}  // namespace nuvrel::test
