// Dialog templates as they stand in the resources, in both of their layouts.
#pragma once

#include <QRect>

#include "platform/linux/ResourceReader.h"

namespace layer {

struct TemplateItem {
    DWORD style = 0;
    DWORD exStyle = 0;
    QRect units;
    int id = 0;
    unsigned classAtom = 0;
    QString className;
    QString text;
    unsigned imageId = 0;  // a picture's control names a resource in place of a text
};

struct DialogTemplate {
    bool extended = false;
    DWORD style = 0;
    DWORD exStyle = 0;
    QRect units;
    QString title;
    int points = 8;
    QString face;
    unsigned count = 0;
};

// Reads the head of a template; the items follow it, one call each.
DialogTemplate readDialogTemplate(ResourceReader& in);
TemplateItem readTemplateItem(ResourceReader& in, bool extended);

}  // namespace layer
