#include "AudioDevices.h"

#include "GstPointers.h"
#include "GstSupport.h"

namespace {

struct DeviceListFree {
    void operator()(GList* list) const { g_list_free_full(list, gst_object_unref); }
};

struct StructureFree {
    void operator()(GstStructure* structure) const { gst_structure_free(structure); }
};

std::optional<QString> internalName(GstDevice* device)
{
    GObject* object = asGObject(device);
    if (!g_object_class_find_property(G_OBJECT_GET_CLASS(object), "internal-name"))
        return std::nullopt;
    gchar* name = nullptr;
    g_object_get(object, "internal-name", &name, nullptr);
    GCharPtr owned(name);
    if (!owned || !*owned)
        return std::nullopt;
    return QString::fromUtf8(owned.get());
}

// The default device of the class, with its properties.
std::optional<std::pair<GstObjectPtr<GstDevice>, std::unique_ptr<GstStructure, StructureFree>>> defaultDevice(
    const char* deviceClass)
{
    GstSupport::ensureInitialized();
    // The devices of the sound server the recording reads from, and only those: a device monitor
    // would also start PipeWire's own provider, whose stop frees memory twice (PipeWire 0.3.65).
    GstObjectPtr<GstDeviceProvider> provider(gst_device_provider_factory_get_by_name("pulsedeviceprovider"));
    // Only a started provider knows which device is the default one.
    if (!provider || !gst_device_provider_start(provider.get()))
        return std::nullopt;
    std::unique_ptr<GList, DeviceListFree> devices(gst_device_provider_get_devices(provider.get()));
    gst_device_provider_stop(provider.get());
    for (GList* item = devices.get(); item; item = item->next) {
        GstDevice* device = static_cast<GstDevice*>(item->data);
        if (!gst_device_has_classes(device, deviceClass))
            continue;
        std::unique_ptr<GstStructure, StructureFree> properties(gst_device_get_properties(device));
        if (!properties)
            continue;
        gboolean isDefault = FALSE;
        if (!gst_structure_get_boolean(properties.get(), "is-default", &isDefault) || !isDefault)
            continue;
        return std::pair(GstObjectPtr<GstDevice>(GST_DEVICE(gst_object_ref(device))), std::move(properties));
    }
    return std::nullopt;
}

} // namespace

std::optional<QString> AudioDevices::defaultMicrophone()
{
    const auto found = defaultDevice("Audio/Source");
    if (!found)
        return std::nullopt;
    const gchar* deviceClass = gst_structure_get_string(found->second.get(), "device.class");
    if (deviceClass && g_str_equal(deviceClass, "monitor"))
        return std::nullopt;
    return internalName(found->first.get());
}

std::optional<QString> AudioDevices::defaultOutputMonitor()
{
    // A PulseAudio sink's monitor source carries the sink's name. "@DEFAULT_MONITOR@" says the same
    // to PulseAudio itself, but PipeWire's pulse server takes it for the default input.
    const auto found = defaultDevice("Audio/Sink");
    const std::optional<QString> sink = found ? internalName(found->first.get()) : std::nullopt;
    if (!sink)
        return std::nullopt;
    return *sink + QStringLiteral(".monitor");
}
