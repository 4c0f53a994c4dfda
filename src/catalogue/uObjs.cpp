#include "uObjs.h"

TCoverPicture* TMetalAsset::PictureOfKind(quint8 kind) const
{
    for (const auto& picture : Pictures) {
        if (picture->Kind == kind)
            return picture.get();
    }
    return nullptr;
}

TCoverPicture& TMetalAsset::AddPicture(quint8 kind, const QString& url)
{
    Pictures.push_back(std::make_unique<TCoverPicture>(kind, url));
    return *Pictures.back();
}

const TMetalAsset& EmptyMetalAsset()
{
    static const TMetalAsset empty;
    return empty;
}
