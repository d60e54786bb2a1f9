// Faults of what is shown now that a program can find; run in the page, gives a list of texts.
return (() => {
    const faults = [];
    const isShown = (one) => one.checkVisibility({ visibilityProperty: true, opacityProperty: true });
    const told = (one) => `${one.tagName.toLowerCase()}${one.id ? '#' + one.id : ''} "${(one.textContent || one.value || '').trim().slice(0, 40)}"`;

    // Headings: one of the first level, none left out.
    const levels = [...document.querySelectorAll('h1, h2, h3, h4, h5, h6')].filter(isShown).map((one) => Number(one.tagName[1]));
    if (levels.filter((level) => level === 1).length !== 1) faults.push(`headings of level 1: ${levels}`);
    levels.forEach((level, at) => { if (at > 0 && level > levels[at - 1] + 1) faults.push(`a level is left out: ${levels}`); });

    // Names that other elements have to give.
    const ids = [...document.querySelectorAll('[id]')].map((one) => one.id);
    for (const id of ids) if (ids.indexOf(id) !== ids.lastIndexOf(id)) faults.push(`twice: id ${id}`);
    for (const attribute of ['aria-labelledby', 'aria-describedby', 'for', 'list']) {
        for (const one of [...document.querySelectorAll(`[${attribute}]`)].filter(isShown)) {
            for (const id of one.getAttribute(attribute).split(' ').filter(Boolean)) {
                if (!ids.includes(id)) faults.push(`${told(one)}: ${attribute} names ${id}, which is not there`);
            }
        }
    }

    for (const one of document.querySelectorAll('[tabindex]')) if (one.tabIndex > 0) faults.push(`${told(one)}: tabindex`);
    for (const one of document.querySelectorAll('table')) {
        if (!one.caption || one.caption.textContent.trim() === '') faults.push('a table without a caption');
        for (const head of one.querySelectorAll('th')) if (!head.scope) faults.push(`${told(head)}: no scope`);
        for (const row of one.tBodies[0].rows) if (!row.querySelector('th')) faults.push(`${told(row)}: a row without a heading`);
    }
    if (document.querySelectorAll('[aria-live]').length !== 1) faults.push('not one live region');
    if (document.documentElement.lang === '') faults.push('no language');
    for (const one of document.querySelectorAll('[onclick], [style], script:not([src]), style')) faults.push(`${told(one)}: inline`);

    // Contrast of every text with what lies behind it.
    const parse = (text) => {
        const numbers = text.match(/[\d.]+/g).map(Number);
        return { rgb: numbers.slice(0, 3), alpha: numbers[3] ?? 1 };
    };
    const over = (front, alpha, back) => front.map((value, at) => value * alpha + back[at] * (1 - alpha));
    const luminance = (rgb) => {
        const [r, g, b] = rgb.map((value) => value / 255).map((value) => (value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4));
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
    };
    const behind = (one) => {
        if (one === null) return [255, 255, 255];
        const { rgb, alpha } = parse(getComputedStyle(one).backgroundColor);
        return alpha === 1 ? rgb : over(rgb, alpha, behind(one.parentElement));
    };
    const opacity = (one) => (one === null ? 1 : Number(getComputedStyle(one).opacity) * opacity(one.parentElement));
    const check = (one, color, text) => {
        const style = getComputedStyle(one);
        const ground = behind(one);
        const { rgb, alpha } = parse(color);
        const [light, dark] = [luminance(over(rgb, alpha * opacity(one), ground)), luminance(ground)].sort((a, b) => b - a);
        const ratio = (light + 0.05) / (dark + 0.05);
        const size = parseFloat(style.fontSize);
        const isLarge = size >= 24 || (size >= 18.66 && Number(style.fontWeight) >= 700);
        if (ratio < (isLarge ? 3 : 4.5)) faults.push(`${told(one)}: contrast ${ratio.toFixed(2)} of "${text.trim().slice(0, 30)}"`);
    };
    const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    while (texts.nextNode()) {
        const one = texts.currentNode.parentElement;
        const isRead = texts.currentNode.data.trim() !== '' && isShown(one) && one.closest('.hidden, :disabled, noscript, option, [aria-disabled="true"]') === null;
        if (isRead) check(one, getComputedStyle(one).color, texts.currentNode.data);
    }
    for (const one of document.querySelectorAll('input:not([type="checkbox"]), select')) {
        if (!isShown(one) || one.disabled) continue;
        check(one, getComputedStyle(one).color, one.value);
        if (one.placeholder) check(one, getComputedStyle(one, '::placeholder').color, one.placeholder);
        // The edge of a control is what shows that it is one.
        const [light, dark] = [luminance(parse(getComputedStyle(one).borderTopColor).rgb), luminance(behind(one.parentElement))].sort((a, b) => b - a);
        if (one.type !== 'file' && (light + 0.05) / (dark + 0.05) < 3) faults.push(`${told(one)}: its edge is hard to see`);
    }
    return faults;
})();
