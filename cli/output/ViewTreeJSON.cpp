#include "cli/output/ViewTreeJSON.h"

#include <string_view>

namespace quillmont::ViewTreeJSON {
namespace {

std::string_view name(View::Kind kind) {
  switch (kind) {
    case View::Kind::row: return "row";
    case View::Kind::column: return "column";
    case View::Kind::text: return "text";
    case View::Kind::image: return "image";
    case View::Kind::spacer: return "spacer";
    case View::Kind::button: return "button";
  }
  return "";
}

std::string_view name(View::Alignment alignment) {
  switch (alignment) {
    case View::Alignment::leading: return "leading";
    case View::Alignment::center: return "center";
    case View::Alignment::trailing: return "trailing";
  }
  return "";
}

std::string_view name(Color::Name colour) {
  switch (colour) {
    case Color::Name::primary: return "primary";
    case Color::Name::secondary: return "secondary";
    case Color::Name::mint: return "mint";
    case Color::Name::red: return "red";
    case Color::Name::clear: return "clear";
  }
  return "";
}

std::string_view name(Font::Style style) {
  switch (style) {
    case Font::Style::body: return "body";
    case Font::Style::headline: return "headline";
    case Font::Style::caption: return "caption";
    case Font::Style::caption2: return "caption2";
    case Font::Style::system: return "system";
  }
  return "";
}

std::string_view name(Font::Weight weight) {
  switch (weight) {
    case Font::Weight::regular: return "regular";
    case Font::Weight::medium: return "medium";
    case Font::Weight::semibold: return "semibold";
    case Font::Weight::bold: return "bold";
  }
  return "";
}

void writeColor(JsonWriter& writer, const Color& colour) {
  writer.beginObject();
  writer.key("name");
  writer.string(name(colour.name));
  writer.key("opacity");
  writer.number(colour.opacity);
  writer.endObject();
}

void writeFont(JsonWriter& writer, const Font& font) {
  writer.beginObject();
  writer.key("style");
  writer.string(name(font.style));
  if (font.style == Font::Style::system) {
    writer.key("size");
    writer.number(font.size);
  }
  writer.key("weight");
  writer.string(name(font.weight));
  writer.key("design");
  writer.string(font.design == Font::Design::rounded ? "rounded" : "default");
  writer.key("monospacedDigits");
  writer.boolean(font.monospacedDigits);
  writer.endObject();
}

void writePadding(JsonWriter& writer, const EdgeInsets& padding) {
  if (padding == EdgeInsets{}) return;
  writer.key("padding");
  writer.beginObject();
  const std::pair<std::string_view, double> edges[] = {
      {"top", padding.top}, {"leading", padding.leading}, {"bottom", padding.bottom}, {"trailing", padding.trailing}};
  for (const auto& [edge, points] : edges) {
    if (points == 0) continue;
    writer.key(edge);
    writer.number(points);
  }
  writer.endObject();
}

void writeAccessibility(JsonWriter& writer, const Accessibility& accessibility) {
  if (accessibility == Accessibility{}) return;
  writer.key("accessibility");
  writer.beginObject();
  if (!accessibility.label.empty()) {
    writer.key("label");
    writer.string(accessibility.label);
  }
  if (!accessibility.value.empty()) {
    writer.key("value");
    writer.string(accessibility.value);
  }
  if (accessibility.hidden) {
    writer.key("hidden");
    writer.boolean(true);
  }
  if (accessibility.combinesChildren) {
    writer.key("combinesChildren");
    writer.boolean(true);
  }
  writer.endObject();
}

}  // namespace

void write(JsonWriter& writer, const View& view) {
  writer.beginObject();
  writer.key("kind");
  writer.string(name(view.kind));
  switch (view.kind) {
    case View::Kind::row:
    case View::Kind::column:
      writer.key("spacing");
      if (view.spacing) {
        writer.number(*view.spacing);
      } else {
        writer.null();
      }
      writer.key("alignment");
      writer.string(name(view.alignment));
      writer.key("children");
      writer.beginArray();
      for (const View& child : view.children) write(writer, child);
      writer.endArray();
      break;
    case View::Kind::text:
      writer.key("text");
      writer.string(view.text);
      writer.key("font");
      writeFont(writer, view.font);
      writer.key("secondary");
      writer.boolean(view.isSecondary);
      if (view.lineLimit > 0) {
        writer.key("lineLimit");
        writer.integer(view.lineLimit);
      }
      if (view.minimumScaleFactor != 1.0) {
        writer.key("minimumScaleFactor");
        writer.number(view.minimumScaleFactor);
      }
      break;
    case View::Kind::image:
      writer.key("systemImage");
      writer.string(view.systemImage);
      if (view.tint) {
        writer.key("tint");
        writeColor(writer, *view.tint);
      }
      break;
    case View::Kind::spacer:
      writer.key("minLength");
      if (view.minLength) {
        writer.number(*view.minLength);
      } else {
        writer.null();
      }
      break;
    case View::Kind::button:
      writer.key("title");
      writer.string(view.text);
      writer.key("systemImage");
      writer.string(view.systemImage);
      writer.key("style");
      writer.string(view.buttonStyle == View::ButtonStyle::borderedProminent ? "borderedProminent" : "bordered");
      writer.key("labelStyle");
      writer.string(view.labelStyle == View::LabelStyle::iconOnly ? "iconOnly" : "titleAndIcon");
      if (view.tint) {
        writer.key("tint");
        writeColor(writer, *view.tint);
      }
      if (view.intent) {
        writer.key("intent");
        writer.beginObject();
        writer.key("title");
        writer.string(view.intent->title());
        writer.key("parameterSummary");
        writer.string(view.intent->parameterSummary());
        writer.endObject();
      }
      break;
  }
  writePadding(writer, view.padding);
  writeAccessibility(writer, view.accessibility);
  writer.endObject();
}

void write(JsonWriter& writer, const WidgetContent& content) {
  writer.beginObject();
  writer.key("background");
  writer.beginObject();
  writer.key("linearGradient");
  writer.beginArray();
  for (const Color& colour : content.containerBackground.colors) writeColor(writer, colour);
  writer.endArray();
  writer.key("from");
  writer.string("topLeading");
  writer.key("to");
  writer.string("bottomTrailing");
  writer.endObject();
  writer.key("url");
  if (content.widgetURL) {
    writer.string(content.widgetURL->absoluteString);
  } else {
    writer.null();
  }
  writer.key("view");
  write(writer, content.root);
  writer.endObject();
}

}  // namespace quillmont::ViewTreeJSON
