#include "scan_diff.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace wex_bench
{

namespace
{

struct DiffLine {
    DiffLine *next;
    DiffLine *first_child;
    unsigned matched;
    unsigned char mark;
    char text[1];
};

DiffLine *new_line(const char *text, std::size_t length, unsigned char mark)
{
    auto *line = static_cast<DiffLine *>(std::calloc(1, sizeof(DiffLine) + length));
    std::memcpy(line->text, text, length);
    line->mark = mark;
    return line;
}

// A list built at its tail.
struct List {
    DiffLine *head = nullptr;
    DiffLine *tail = nullptr;
    void push(DiffLine *line)
    {
        (tail ? tail->next : head) = line;
        tail = line;
    }
};

void free_list(DiffLine *line)
{
    while (line) {
        DiffLine *next = line->next;
        free_list(line->first_child);
        std::free(line);
        line = next;
    }
}

DiffLine *parse(const char *text)
{
    List top, children1, children2;
    DiffLine *parent1 = nullptr, *parent2 = nullptr;
    for (const char *end; text && (end = std::strchr(text, '\n')) != nullptr; text = end + 1) {
        const std::size_t length = static_cast<std::size_t>(end - text);
        if (std::strspn(text, " \t\r\v\f") >= length)
            continue;
        const std::size_t blanks = std::strspn(text, " ");
        const int level = text[0] == ' ' ? static_cast<int>(std::min<std::size_t>(blanks / 2 + 1, 3)) : 1;
        DiffLine *line = new_line(text, length, 0);
        if (level == 1 || !parent1) {
            top.push(line);
            parent1 = line;
            parent2 = nullptr;
            children1 = List{};
        } else if (level == 2 || !parent2) {
            children1.push(line);
            parent1->first_child = children1.head;
            parent2 = line;
            children2 = List{};
        } else {
            children2.push(line);
            parent2->first_child = children2.head;
        }
    }
    return top.head;
}

DiffLine *copy_marked(const DiffLine *line, unsigned char mark)
{
    DiffLine *copy = new_line(line->text, std::strlen(line->text), mark);
    List children;
    for (const DiffLine *c = line->first_child; c; c = c->next)
        children.push(copy_marked(c, mark));
    copy->first_child = children.head;
    return copy;
}

DiffLine *diff_lists(DiffLine *a, DiffLine *b)
{
    List result;
    for (; a; a = a->next) {
        DiffLine *match = b;
        while (match && (match->matched || std::strcmp(match->text, a->text) != 0))
            match = match->next;
        if (!match) {
            result.push(copy_marked(a, '-'));
            continue;
        }
        DiffLine *sub = diff_lists(a->first_child, match->first_child);
        match->matched = a->matched = 1;
        if (sub) {
            DiffLine *context = new_line(a->text, std::strlen(a->text), ' ');
            context->first_child = sub;
            result.push(context);
        }
    }
    for (; b; b = b->next) {
        if (!b->matched) {
            b->matched = 1;
            result.push(copy_marked(b, '+'));
        }
    }
    return result.head;
}

} // namespace

int scan_is_diff_same(const char *first, const char *second)
{
    DiffLine *a = parse(first), *b = parse(second);
    DiffLine *result = diff_lists(a, b);
    const int same = result == nullptr;
    free_list(result);
    free_list(a);
    free_list(b);
    return same;
}

} // namespace wex_bench
