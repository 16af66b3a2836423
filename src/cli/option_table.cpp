#include "cli/option_table.h"

#include <algorithm>
#include <string>

#include "console/usage.h"

namespace quorvelle {

namespace {

constexpr OptionText kOptions[] = {
    {"--access-key <k>", "the access key of the bucket"},
    {"--account-id <id>", "the Cloudflare account, where the token sees several"},
    {"--args <a>", "arguments that the program is started with, quoted as one"},
    {"--bucket <b>", "the bucket's name"},
    {"--bucket <name>", "a name for the new bucket; one is made up without it"},
    {"--build <id>", "an id for the build; the time in UTC without it"},
    {"--channel <name>", "the channel that the build is promoted into"},
    {"--channels <a,b>", "the channels that a publisher may publish to"},
    {"--ci-secret-file <path>", "write the credential for CI to this file instead of showing it",
     Takes::kFile},
    {"--clear", "let no launch target be the one that runs by default"},
    {"--client-id <id>", "the id by which the provider knows the server"},
    {"--client-secret <s>", "the secret that the provider gave for that id"},
    {"--days <n>", "for how many days the invite is good"},
    {"--dir <path>", "the install directory; every update replaces all of it", Takes::kDirectory},
    {"--email <addr>", "where the administrators can answer"},
    {"--endpoint <url>", "the address of the S3 service that has the bucket"},
    {"--exe <rel-path>", "the program, relative to the install directory"},
    {"--force", "download the build again, on a channel without chunks, even if it is there"},
    {"--from <channel>", "take the build that this channel points at"},
    {"--groups <a,b>", "the groups that the invited user is put into"},
    {"--groups <claim>", "the claim in which the provider lists groups"},
    {"--help", kHelpOptionText},
    {"--install-root <path>",
     "the folder for the assigned channels; Quorvelle-Builds at home without it",
     Takes::kDirectory},
    {"--interval <seconds|manual|default>",
     "how often launchers sync it; the program itself only stores it"},
    {"--issuer <url>", "the address of the single sign-on provider"},
    {"--json", kJsonOptionText},
    {"--jurisdiction eu|us|none", "where Cloudflare keeps the bucket; none says nothing of it"},
    {"--keep <N>", "how many snapshots to keep; 0 for all of them"},
    {"--label <l>", "the name under which the target is chosen"},
    {"--machine <name>", "the name that the server lists this machine under"},
    {"--message <text>", "a word to the administrators"},
    {"--name <licensee>", "who the license is for"},
    {"--name <name>", "a name for the subscription; that of the channel without it"},
    {"--name <subscription>", "only this subscription", Takes::kSubscription},
    {"--name <user>", "the user name that you would like"},
    {"--no-browser", "only print the link"},
    {"--primary", "let this be the target that runs by default"},
    {"--region <r>", "the bucket's region; auto without it"},
    {"--role admin|member|publisher", "what the user may do; member without it"},
    {"--roles <claim>", "the claim in which the provider lists roles"},
    {"--scopes <scopes>", "what is asked of the provider, separated by blanks"},
    {"--secret-key <s>", "the secret key of the bucket"},
    {"--self-heal <none|quick|full|default>",
     "how an up-to-date install of a tide channel is checked"},
    {"--server <url>", "the server to ask instead of the configured one", Takes::kServer},
    {"sync --server <url>", "only the subscriptions of this server", Takes::kServer},
    {"--service", "a service account for CI: it publishes and takes no seat"},
    {"--shared", "beside the builds, in the bucket that the server has"},
    {"--single-token", "one credential for the server and for CI, which can write"},
    {"--target <label>", "the launch target; the primary or only one without it"},
    {"--token <token>", "the token for this subscription; the server's or default one without it"},
    {"--token-file <path>", "read the Cloudflare token from this file", Takes::kFile},
    {"--user <service-account>", "the service account that the token stands for"},
    {"--wait", "wait for the program's end and take over its exit code"},
    {"--yes", "do it; without this it is only reported"},
};

constexpr PlaceMeaning kPlaces[] = {
    {"<dir>", Takes::kDirectory},
    {"<path>", Takes::kDirectory},
    {"<role>", Takes::kRole},
    {"<server>", Takes::kServer},
    {"<subscription>", Takes::kSubscription},
    {"<url>", Takes::kServer},
    {"subscription set-interval <name>", Takes::kSubscription},
    {"subscription set-self-heal <name>", Takes::kSubscription},
    {"unsubscribe <name>", Takes::kSubscription},
};

/// The entry for the command alone, else the one for all, by the member that `key` names.
template <typename Entry>
const Entry* find(std::span<const Entry> entries, std::string_view Entry::*key,
                  std::string_view words, std::string_view shown) {
    const std::string ofCommand = std::string(words) + ' ' + std::string(shown);
    for (const std::string_view wanted : {std::string_view(ofCommand), shown}) {
        const auto found = std::find_if(entries.begin(), entries.end(),
                                        [&](const Entry& entry) { return entry.*key == wanted; });
        if (found != entries.end()) {
            return &*found;
        }
    }
    return nullptr;
}

}  // namespace

std::span<const OptionText> optionTexts() {
    return kOptions;
}

std::span<const PlaceMeaning> placeMeanings() {
    return kPlaces;
}

const OptionText* findOptionText(std::string_view words, std::string_view option) {
    return find(optionTexts(), &OptionText::option, words, option);
}

Takes findPlaceMeaning(std::string_view words, std::string_view place) {
    const PlaceMeaning* found = find(placeMeanings(), &PlaceMeaning::place, words, place);
    return found == nullptr ? Takes::kAnything : found->takes;
}

}  // namespace quorvelle
