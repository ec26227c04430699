#include "tela/state/TelaState.h"

#include "tela/core/NotifyMsgTypeDictionary.h"
#include "tela/platform/FxResources.h"

TelaState::TelaState() : mouseStateChangeType(NotifyMsgTypeDictionary::intern("MouseStateChange"))
{
    // No report yet: all zero, not the move a fresh record stands for.
    lastMouseEvent.action = 0;
}

TelaState& tela_state()
{
    // Built on first use, guarded by the language; lives until the process ends.
    static TelaState s_state;
    return s_state;
}

Canvas* tela_rootcanvas()
{
    const TelaState& state = tela_state();
    return state.rootWindows.empty() ? nullptr : state.rootWindows.front().rootCanvas;
}

Qv::Ptr<iShaderEffect> tela_shader(Tela::Shader which)
{
    // In the order of Tela::Shader's values.
    static constexpr const char* NAMES[Tela::SHADER_COUNT] = {"InFront", "ShadowLR", "ShadowTB", "ShadowC",
                                                           "RoundedRectangle", "Ellipse"};
    static_assert(static_cast<int>(Tela::Shader::Ellipse) == Tela::SHADER_COUNT - 1);
    const int number = static_cast<int>(which);
    if (number < 0 || number >= Tela::SHADER_COUNT)
        return nullptr;
    Qv::Ptr<iShaderEffect>& shader = tela_state().shaders[number];
    if (!shader)
        shader = Qv::FxResources::Manager::instance().findShader(String(NAMES[number]));
    return shader;
}

Notifier& tela_getNotifier()
{
    return tela_state();
}

Qv::Ptr<Qv::Guard> Tela::addListener(const Qv::Ptr<iCallbackBase<int, NotifyMsg>>& callback,
                                     eNotificationEventType type)
{
    const int channel = type == eAllNotifications ? NotifyMsgTypeDictionary::instance().allTypesId : type;
    return tela_getNotifier().registerNotification(callback, channel);
}

Qv::Ptr<Qv::Guard> Tela::addMouseListener(const Qv::Ptr<iCallbackBase<int, NotifyMsg>>& callback)
{
    return tela_getNotifier().registerNotification(callback, tela_state().mouseStateChangeType);
}
