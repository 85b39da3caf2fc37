// libFuzzer target for what an ONVIF client sends the console: the bytes go
// through the HTTP request reader in pieces, as reads from the network cut
// them, and each request's body (and the input itself) through the SOAP
// envelope reader. Besides a crash or a sanitizer report, a finding is
//   - requests, or the status that ends the connection, that depend on
//     where the reads broke;
//   - a fault envelope that does not read back as the same fault;
//   - a timeout read as negative or longer than a day.
//
// Input: the first byte sets the size of the pieces (1..16), the rest is
// what the client sends.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "remote/onvif/http_request.h"
#include "remote/onvif/ptz_spaces.h"
#include "remote/onvif/soap_message.h"

namespace {

using halvex::onvif::HttpRequestReader;

[[noreturn]] void finding(const char* what) {
    std::fprintf(stderr, "onvif fuzzer: %s\n", what);
    std::abort();
}

struct Read {
    std::vector<std::string> requests;
    int status = 0;
    bool operator==(const Read&) const = default;
};

Read readRequests(std::string_view input, std::size_t piece) {
    HttpRequestReader reader(2048, 16384);
    Read read;
    for (std::size_t at = 0; at < input.size() && read.status == 0; at += piece) {
        reader.feed(input.substr(at, piece));
        for (;;) {
            const auto state = reader.next();
            if (state == HttpRequestReader::State::Complete) {
                const auto request = reader.take();
                read.requests.push_back(request.method + ' ' + request.target + ' ' +
                                        request.version + '\n' + request.body);
                continue;
            }
            if (state == HttpRequestReader::State::Failed) {
                read.status = reader.status();
            }
            break;
        }
    }
    return read;
}

void readEnvelope(const std::string& bytes) {
    const auto parsed = halvex::onvif::parseSoapRequest(
        QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
    if (const auto* fault = std::get_if<halvex::onvif::SoapFault>(&parsed)) {
        const auto back = halvex::onvif::parseSoapRequest(halvex::onvif::faultEnvelope(*fault));
        const auto* answer = std::get_if<halvex::onvif::SoapRequest>(&back);
        if (answer == nullptr || answer->body.name != QLatin1String("Fault")) {
            finding("a fault envelope does not read back");
        }
        return;
    }
    const auto& request = std::get<halvex::onvif::SoapRequest>(parsed);
    // Every element's text as a timeout, as ContinuousMove reads its own.
    for (const auto& child : request.body.children) {
        if (const auto ms = halvex::onvif::durationMs(child.text.toStdString())) {
            if (*ms < 0 || *ms > 24 * 3600 * 1000) {
                finding("a timeout out of its range");
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) {
        return 0;
    }
    const std::size_t piece = 1 + (data[0] % 16);
    const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
    const Read whole = readRequests(input, input.size() + 1);
    if (!(readRequests(input, piece) == whole)) {
        finding("what is read depends on where the reads broke");
    }
    for (const std::string& request : whole.requests) {
        readEnvelope(request.substr(request.find('\n') + 1));
    }
    readEnvelope(std::string(input));
    return 0;
}
