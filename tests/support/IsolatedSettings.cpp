// Every test process gets settings of its own: XDG_CONFIG_HOME points at a
// fresh directory, removed at exit, so no test reads the developer's
// preferences or writes into them.

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

class IsolatedSettings {
public:
    IsolatedSettings()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "tela-settings-XXXXXX").string();
        if (::mkdtemp(pattern.data())) {
            m_directory = pattern;
            ::setenv("XDG_CONFIG_HOME", m_directory.c_str(), 1);
        }
    }
    ~IsolatedSettings()
    {
        std::error_code ignored;
        if (!m_directory.empty())
            std::filesystem::remove_all(m_directory, ignored);
    }

private:
    std::string m_directory;
};

const IsolatedSettings isolated_settings;

} // namespace
