#include "wayfen/junk_hosts.h"

namespace wayfen {

const std::set<std::string, std::less<>>& junkHostSuffixes() {
    static const std::set<std::string, std::less<>> suffixes{
        "shutterstock.com", "gettyimages.com",   "istockphoto.com",   "alamy.com",
        "dreamstime.com",   "123rf.com",         "depositphotos.com", "stock.adobe.com",
        "pond5.com",        "bigstockphoto.com", "vectorstock.com",   "stockfresh.com",
    };
    return suffixes;
}

}  // namespace wayfen
