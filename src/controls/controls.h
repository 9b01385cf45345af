#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The controls of a form as plain values. Each notifies one observer, at most, after a change.
namespace vento {

/// Notifies the observer of a control after a change, on the thread that made it.
class ChangeSignal {
  public:
    void Observe(std::function<void()> observer) { observer_ = std::move(observer); }

    /// Assigns `value` to `field`, and notifies if that makes a difference.
    template <class Field, class Value>
    void Assign(Field& field, Value&& value) const {
        if (field == value) return;
        field = std::forward<Value>(value);
        Notify();
    }

    void Notify() const {
        if (observer_) observer_();
    }

  private:
    std::function<void()> observer_;
};

class Button {
  public:
    Button() = default;
    Button(bool visible, bool enabled) : visible_(visible), enabled_(enabled) {}

    [[nodiscard]] const std::string& Caption() const { return caption_; }
    [[nodiscard]] bool Visible() const { return visible_; }
    [[nodiscard]] bool Enabled() const { return enabled_; }
    /// A text that the control carries along and does not show.
    [[nodiscard]] const std::string& Tag() const { return tag_; }

    void SetCaption(std::string_view caption) { changed_.Assign(caption_, caption); }
    void SetVisible(bool visible) { changed_.Assign(visible_, visible); }
    void SetEnabled(bool enabled) { changed_.Assign(enabled_, enabled); }
    void SetTag(std::string_view tag) { changed_.Assign(tag_, tag); }
    void Observe(std::function<void()> observer) { changed_.Observe(std::move(observer)); }

  private:
    ChangeSignal changed_;
    std::string caption_;
    std::string tag_;
    bool visible_ = true;
    bool enabled_ = true;
};

class Label {
  public:
    Label() = default;
    explicit Label(bool visible) : visible_(visible) {}

    [[nodiscard]] const std::string& Caption() const { return caption_; }
    [[nodiscard]] bool Visible() const { return visible_; }

    void SetCaption(std::string_view caption) { changed_.Assign(caption_, caption); }
    void SetVisible(bool visible) { changed_.Assign(visible_, visible); }
    void Observe(std::function<void()> observer) { changed_.Observe(std::move(observer)); }

  private:
    ChangeSignal changed_;
    std::string caption_;
    bool visible_ = true;
};

class TextBox {
  public:
    explicit TextBox(std::string_view text) : text_(text) {}

    [[nodiscard]] const std::string& Text() const { return text_; }
    void SetText(std::string_view text) { changed_.Assign(text_, text); }
    void Observe(std::function<void()> observer) { changed_.Observe(std::move(observer)); }

  private:
    ChangeSignal changed_;
    std::string text_;
};

/// A list of items that are texts and nothing more.
class ListView {
  public:
    [[nodiscard]] const std::vector<std::string>& Items() const { return items_; }
    /// The first item; empty if there is none.
    [[nodiscard]] std::string_view FirstItem() const {
        return items_.empty() ? std::string_view{} : items_.front();
    }

    void Clear() {
        if (items_.empty()) return;
        items_.clear();
        changed_.Notify();
    }
    void Add(std::string_view text) {
        items_.emplace_back(text);
        changed_.Notify();
    }
    void Observe(std::function<void()> observer) { changed_.Observe(std::move(observer)); }

  private:
    ChangeSignal changed_;
    std::vector<std::string> items_;
};

class ProgressBar {
  public:
    [[nodiscard]] float Minimum() const { return minimum_; }
    [[nodiscard]] float Maximum() const { return maximum_; }
    [[nodiscard]] float Value() const { return value_; }
    [[nodiscard]] bool Visible() const { return visible_; }

    /// How much of the range lies below the value, in whole percents; 0 of no range.
    [[nodiscard]] int Percent() const {
        const float range = maximum_ - minimum_;
        return range > 0 ? static_cast<int>((value_ - minimum_) * 100 / range) : 0;
    }

    void SetMinimum(float minimum) { changed_.Assign(minimum_, minimum); }
    void SetMaximum(float maximum) { changed_.Assign(maximum_, maximum); }
    void SetValue(float value) { changed_.Assign(value_, value); }
    void SetVisible(bool visible) { changed_.Assign(visible_, visible); }
    void Observe(std::function<void()> observer) { changed_.Observe(std::move(observer)); }

  private:
    ChangeSignal changed_;
    float minimum_ = 0;
    float maximum_ = 100;
    float value_ = 0;
    bool visible_ = false;
};

}  // namespace vento
