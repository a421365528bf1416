#include "common/user_agent.h"

#include <array>

namespace stream {
namespace {

struct MarkedAgent {
  const char* marker;
  const char* agent;
};

// In order of precedence.
constexpr std::array kMarkedAgents = {
    MarkedAgent{"&pt=android&",
                "Mozilla/5.0 (Linux; U; Android 4.0.3; zh-cn; M032 Build/IML74K) "
                "AppleWebKit/534.30 (KHTML, like Gecko) Version/4.0 Mobile Safari/534.30"},
    MarkedAgent{"&pt=ios&",
                "Mozilla/5.0 (iPhone; CPU iPhone OS 5_1_1 like Mac OS X) "
                "AppleWebKit/534.46 (KHTML, like Gecko) Version/5.1 Mobile/9B206 Safari/7534.48.3"},
};

}  // namespace

const char* UserAgentFor(const std::string& url) {
  for (const MarkedAgent& row : kMarkedAgents) {
    const auto position = url.find(row.marker);
    if (position != std::string::npos && position > 0) return row.agent;
  }
  return nullptr;
}

bool SetUserAgent(CURL* handle, const std::string& url) {
  const char* agent = UserAgentFor(url);
  if (agent == nullptr) return false;
  curl_easy_setopt(handle, CURLOPT_USERAGENT, agent);
  return true;
}

}  // namespace stream
